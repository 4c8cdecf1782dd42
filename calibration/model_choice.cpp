#include "calibration/model_choice.h"

#include "calibration/start_values.h"

namespace calibration {

LensModel startCamera(const Observations &observations, int camera, std::optional<LensModel> model,
                      Eigen::VectorXd &lens) {
    const std::vector<LensModel> models =
        model ? std::vector<LensModel>{*model} : std::vector<LensModel>{LensModel::Pinhole5, LensModel::Fisheye};
    Observations some = observations;
    LensModel chosen = models.front();
    std::optional<double> least;
    for (const LensModel one : models) {
        some.cameras[size_t(camera)].lens = one;
        Eigen::VectorXd tried;
        const std::optional<double> rms = startLens(some, camera, tried);
        if (rms && (!least || *rms < *least)) {
            least = rms;
            chosen = one;
            lens = tried;
        }
    }
    return chosen;
}

}  // namespace calibration
