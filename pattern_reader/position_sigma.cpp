#include "pattern_reader/position_sigma.h"

namespace pattern_reader {

void estimateSigmas(CornerLattice &lattice, std::vector<CornerFit> &fits) {
    for (size_t i = 0; i < fits.size(); i++) {
        lattice.corners[i].sigma = fits[i].sigma;
    }
}

}  // namespace pattern_reader
