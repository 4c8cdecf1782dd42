#include "calibration/covariance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "calibration/dense_solve.h"
#include "calibration/lens_prior.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

// The derivatives of one sighting's residuals with respect to all blocks of parameters.
struct Derivatives {
    std::array<RowMajor, blockCount> byBlock;
    Eigen::VectorXd residuals;

    // False if a corner cannot be projected.
    bool compute(const SightingResiduals &what, const BlockPointers &blocks) {
        std::array<double *, blockCount> pointers{};
        for (int block = 0; block < blockCount; block++) {
            byBlock[size_t(block)].resize(what.rows(), what.blockSize(Block(block)));
            pointers[size_t(block)] = byBlock[size_t(block)].data();
        }
        residuals.resize(what.rows());
        return what.evaluate(blocks, residuals.data(), pointers.data());
    }
};

// The derivatives of the residuals of one moment, with one row for each residual of its sightings. `shared` has the
// derivatives with respect to those parameters of cameras and prints on which these sightings depend. `byPose` has the
// derivatives with respect to the moment's pose.
class MomentRows {
public:
    void add(const Derivatives &derivatives, const std::vector<int> &places, const RowMajor &byShared) {
        const Eigen::Index first = byPose.rows();
        const Eigen::Index count = byShared.rows();
        std::vector<Eigen::Index> columns;
        for (const int place : places) {
            const auto known = std::find(taken.begin(), taken.end(), place);
            columns.push_back(known - taken.begin());
            if (known == taken.end()) {
                taken.push_back(place);
            }
        }
        shared.conservativeResizeLike(Eigen::MatrixXd::Zero(first + count, Eigen::Index(taken.size())));
        byPose.conservativeResize(first + count, 6);
        byPose.bottomRows(count) = derivatives.byBlock[size_t(Block::RigFromWorld)];
        for (size_t i = 0; i < columns.size(); i++) {
            shared.col(columns[i]).tail(count) = byShared.col(Eigen::Index(i));
        }
    }

    // True if the rows say nothing about shared parameters. Either no row depends on a shared parameter, or there are
    // at most six rows. The six numbers of the pose alone can fit that many rows.
    bool isEmpty() const { return taken.empty() || byPose.rows() <= 6; }

    // Adds the information that the residuals give about the shared parameters if the moment's pose is unknown. To get
    // it, the rows are projected onto the space that is orthogonal to `byPose`. The Schur complement of the normal
    // equations would be less exact. It is the difference of two terms, which are nearly equal for focal lengths.
    void addTo(Eigen::MatrixXd &information) {
        const Eigen::MatrixXd products = gramMatrix(orthogonalPart(shared, byPose));
        for (size_t i = 0; i < taken.size(); i++) {
            for (size_t j = 0; j < taken.size(); j++) {
                information(taken[i], taken[j]) += products(Eigen::Index(i), Eigen::Index(j));
            }
        }
    }

private:
    std::vector<int> taken;  // the index of each column of `shared` among all shared parameters
    Eigen::MatrixXd shared;
    Eigen::MatrixXd byPose;
};

// Inverts an information matrix. Parameters of a lens can be correlated so strongly that the matrix is nearly singular
// although every projection is well determined. So eigenvalues below the rounding error are raised to the rounding
// error, and a direction about which nothing is known gets a huge variance. Returns nothing if a number is not finite,
// if there is no information at all about a parameter, or if the eigenvalues cannot be computed.
std::optional<Eigen::MatrixXd> inverseOf(const Eigen::MatrixXd &information) {
    const Eigen::VectorXd diagonal = information.diagonal();
    if (!information.allFinite() || (diagonal.size() > 0 && !(diagonal.minCoeff() > 0))) {
        return std::nullopt;
    }
    if (diagonal.size() == 0) {
        return information;
    }
    // With a unit diagonal, the eigenvalues do not depend on the parameters' units.
    const Eigen::VectorXd scale = diagonal.cwiseSqrt().cwiseInverse();
    const Eigen::MatrixXd scaled = scale.asDiagonal() * information * scale.asDiagonal();
    const std::optional<Eigensystem> system = eigensystemOf((scaled + scaled.transpose()) / 2);
    if (!system) {
        return std::nullopt;
    }
    constexpr double roundingError = 1e-15;
    const Eigen::VectorXd eigenvalues = system->values.cwiseMax(roundingError * double(diagonal.size()));
    const Eigen::MatrixXd root =
        scale.asDiagonal() * system->vectors * eigenvalues.cwiseSqrt().cwiseInverse().asDiagonal();
    return gramMatrix(root.transpose());
}

std::vector<int> consecutive(int first, int size) {
    std::vector<int> places(static_cast<size_t>(size));
    std::iota(places.begin(), places.end(), first);
    return places;
}

}  // namespace

// Adds up the information of all moments.
class CovarianceSum {
public:
    CovarianceSum(const Observations &seen, const Freedom &free, const Estimate &solved, Covariance &covariance)
        : observations(seen), freedom(free), estimate(solved), result(covariance) {
        layOut();
        information.setZero(size, size);
    }

    bool run() {
        std::vector<std::vector<const Sighting *>> sightings(static_cast<size_t>(observations.moments));
        for (const Sighting &sighting : observations.sightings) {
            if (takesPart(observations, sighting, estimate)) {
                sightings[size_t(observations.photographs[size_t(sighting.photograph)].moment)].push_back(&sighting);
            }
        }
        for (const std::vector<const Sighting *> &some : sightings) {
            if (!addMoment(some)) {
                return false;
            }
        }
        addPriors();
        limitCoefficients();
        const std::optional<Eigen::MatrixXd> inverse = inverseOf(information);
        const double freeRows = rows - size - 6 * moments;
        if (!inverse || !(freeRows > 0)) {
            return false;
        }
        // Simulated corners can fit exactly. A factor of 0 would make every parameter seem certain, even one that the
        // corners do not determine.
        constexpr double leastFactor = 1e-30;
        result.factor = std::max(squares / freeRows, leastFactor);
        result.matrix = result.factor * *inverse;
        return true;
    }

private:
    Covariance::Range take(int count) {
        size += count;
        return {size - count, count};
    }

    void layOut() {
        std::vector<bool> cameraIsSeen(observations.cameras.size(), false);
        std::vector<bool> printIsSeen(observations.prints.size(), false);
        for (const Sighting &sighting : observations.sightings) {
            if (takesPart(observations, sighting, estimate)) {
                cameraIsSeen[size_t(observations.photographs[size_t(sighting.photograph)].camera)] = true;
                printIsSeen[size_t(sighting.print)] = true;
            }
        }
        for (size_t i = 0; i < observations.cameras.size(); i++) {
            const bool varies = cameraIsSeen[i] && freedom.intrinsics;
            const bool moves = cameraIsSeen[i] && freedom.rig && rigOrigin(observations, int(i)) != int(i);
            const Covariance::Range intrinsics = take(varies ? int(estimate.intrinsics[i].size()) : 0);
            result.cameras.push_back({intrinsics, take(moves ? 6 : 0)});
        }
        for (size_t i = 0; i < observations.prints.size(); i++) {
            const bool moves = printIsSeen[i] && freedom.prints && !estimate.isOrigin(int(i));
            const Covariance::Range pose = take(moves ? 6 : 0);
            const bool bends = printIsSeen[i] && !freedom.shapes.empty();
            result.prints.push_back({pose, take(bends ? int(freedom.shapes[i].size()) : 0)});
        }
    }

    bool addMoment(const std::vector<const Sighting *> &sightings) {
        MomentRows stacked;
        Derivatives derivatives;
        for (const Sighting *sighting : sightings) {
            const SightingResiduals residuals(observations, *sighting, 0);
            if (residuals.corners() == 0) {
                continue;
            }
            if (!derivatives.compute(residuals, blocksOf(observations, *sighting, estimate))) {
                return false;
            }
            squares += derivatives.residuals.squaredNorm();
            rows += residuals.rows();
            result.corners += residuals.corners();
            addSighting(*sighting, derivatives, stacked);
        }
        if (!stacked.isEmpty()) {
            moments++;
            stacked.addTo(information);
        }
        return true;
    }

    void addSighting(const Sighting &sighting, const Derivatives &derivatives, MomentRows &stacked) const {
        const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
        const Covariance::CameraRanges &camera = result.cameras[size_t(photograph.camera)];
        const Covariance::PrintRanges &print = result.prints[size_t(sighting.print)];
        std::vector<int> places;
        RowMajor byShared(derivatives.residuals.size(),
                          camera.intrinsics.size + camera.pose.size + print.pose.size + print.shape.size);
        const auto addColumns = [&](Covariance::Range range, Block block, const std::vector<int> &columns) {
            for (int i = 0; i < range.size; i++) {
                byShared.col(Eigen::Index(places.size())) = derivatives.byBlock[size_t(block)].col(columns[size_t(i)]);
                places.push_back(range.first + i);
            }
        };
        addColumns(camera.intrinsics, Block::Intrinsics, consecutive(0, camera.intrinsics.size));
        addColumns(camera.pose, Block::CameraFromRig, consecutive(0, 6));
        addColumns(print.pose, Block::WorldFromPrint, consecutive(0, 6));
        if (print.shape.size > 0) {
            addColumns(print.shape, Block::Shape, freedom.shapes[size_t(sighting.print)]);
        }
        stacked.add(derivatives, places, byShared);
    }

    // Distortion coefficients can replace each other almost exactly, in particular those of a rational function: some
    // combinations of them have nearly no effect. Rounding errors of such a combination would reach every other
    // parameter. So the standard deviation of each coefficient is limited to 100,000 times the one that it would have
    // if everything else were known. This does not falsify the uncertainty of projected points, because they hardly
    // depend on such a combination.
    void limitCoefficients() {
        constexpr double leastShare = 1e-10;
        for (const Covariance::CameraRanges &camera : result.cameras) {
            for (int i = pinholeParameters; i < camera.intrinsics.size; i++) {
                information(camera.intrinsics.first + i, camera.intrinsics.first + i) *= 1 + leastShare;
            }
        }
    }

    void addPriors() {
        for (size_t i = 0; i < observations.cameras.size(); i++) {
            const Covariance::Range range = result.cameras[i].intrinsics;
            if (range.size > 0) {
                const Eigen::VectorXd prior = lensPrior(observations.cameras[i], estimate.intrinsics[i]);
                information.diagonal().segment(range.first, range.size) += prior.cwiseAbs2();
            }
        }
        for (size_t i = 0; i < observations.prints.size(); i++) {
            const Covariance::Range range = result.prints[i].shape;
            for (int number = 0; number < range.size; number++) {
                const auto which = size_t(freedom.shapes[i][size_t(number)]);
                if (which < size_t(PrintShape::bend)) {
                    const double sigma = freedom.priorOf(int(i)).sigma[which];
                    information(range.first + number, range.first + number) += 1 / (sigma * sigma);
                }
            }
        }
    }

    const Observations &observations;
    const Freedom &freedom;
    const Estimate &estimate;
    Covariance &result;
    int size = 0;  // the number of shared parameters
    Eigen::MatrixXd information;
    double squares = 0;
    double rows = 0;
    int moments = 0;
};

Eigen::MatrixXd Covariance::blockAt(const std::vector<Range> &ranges) const {
    std::vector<int> places;
    for (const Range &range : ranges) {
        for (int i = 0; i < range.size; i++) {
            places.push_back(range.first + i);
        }
    }
    return matrix(places, places);
}

std::optional<Covariance> covarianceOf(const Observations &observations, const Freedom &freedom,
                                       const Estimate &estimate) {
    Covariance result;
    return CovarianceSum(observations, freedom, estimate, result).run() ? std::optional(result) : std::nullopt;
}

}  // namespace calibration
