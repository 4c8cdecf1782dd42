#include "calibration/joint_solve.h"

#include <ceres/ceres.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "calibration/calibrate.h"
#include "calibration/interruption.h"
#include "calibration/lens_prior.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

// The first radius of the trust region if the estimate is near the solution. Some parameters of a lens have nearly the
// same effect, so a change of one can compensate a change of another, and the residuals hardly change. With Ceres's
// default radius of 1e4, the first steps would make such combined changes only half as large as they should be.
constexpr double nearRadius = 1e8;

class SightingCost : public ceres::CostFunction {
public:
    explicit SightingCost(SightingResiduals &&what) : residualsOf(std::move(what)) {
        set_num_residuals(residualsOf.rows());
        for (int block = 0; block < blockCount; block++) {
            mutable_parameter_block_sizes()->push_back(residualsOf.blockSize(Block(block)));
        }
    }

    bool Evaluate(double const *const *parameters, double *residuals, double **jacobians) const override {
        BlockPointers blocks{};
        std::copy_n(parameters, blockCount, blocks.begin());
        return residualsOf.evaluate(blocks, residuals, jacobians);
    }

private:
    SightingResiduals residualsOf;
};

// Pulls a print's scale, ratio and shear towards the means of their prior. Each of the three gets the weight 0 if it
// is held constant.
class PrintPriorCost : public ceres::SizedCostFunction<3, PrintShape::count> {
public:
    PrintPriorCost(const std::vector<int> &free, const ShapePrior &prior) : mean(prior.mean) {
        for (const int number : free) {
            if (number < PrintShape::bend) {
                weights[size_t(number)] = 1 / prior.sigma[size_t(number)];
            }
        }
    }

    bool Evaluate(double const *const *parameters, double *residuals, double **jacobians) const override {
        for (size_t i = 0; i < weights.size(); i++) {
            residuals[i] = weights[i] * (parameters[0][i] - mean[i]);
        }
        if (jacobians != nullptr && jacobians[0] != nullptr) {
            std::fill_n(jacobians[0], weights.size() * PrintShape::count, 0.0);
            for (size_t i = 0; i < weights.size(); i++) {
                jacobians[0][i * PrintShape::count + i] = weights[i];
            }
        }
        return true;
    }

private:
    std::array<double, PrintShape::bend> mean;
    std::array<double, PrintShape::bend> weights{};
};

// Pulls the coefficients of a lens towards zero, with the weights of lensPrior().
class LensPriorCost : public ceres::CostFunction {
public:
    explicit LensPriorCost(Eigen::VectorXd prior) : weights(std::move(prior)) {
        set_num_residuals(int(weights.size()));
        mutable_parameter_block_sizes()->push_back(int(weights.size()));
    }

    bool Evaluate(double const *const *parameters, double *residuals, double **jacobians) const override {
        Eigen::Map<Eigen::VectorXd>(residuals, weights.size()) =
            weights.cwiseProduct(Eigen::Map<const Eigen::VectorXd>(parameters[0], weights.size()));
        if (jacobians != nullptr && jacobians[0] != nullptr) {
            Eigen::Map<Eigen::MatrixXd>(jacobians[0], weights.size(), weights.size()) = weights.asDiagonal();
        }
        return true;
    }

private:
    Eigen::VectorXd weights;
};

class EndWhenCancelled : public ceres::IterationCallback {
public:
    ceres::CallbackReturnType operator()(const ceres::IterationSummary &) override {
        return Interruption::isWanted() ? ceres::SOLVER_ABORT : ceres::SOLVER_CONTINUE;
    }
};

// The problem in the form that Ceres needs. Solving it changes the numbers of the estimate in place.
class JointProblem {
public:
    JointProblem(const Observations &seen, const SolveOptions &how, Estimate &unknown)
        : observations(seen), options(how), estimate(unknown) {
        for (const Sighting &sighting : observations.sightings) {
            if (takesPart(observations, sighting, estimate)) {
                addSighting(sighting);
            }
        }
        for (const int print : prints) {
            restrictPrint(print);
        }
        for (const int camera : cameras) {
            restrictCamera(camera);
        }
    }

    bool isEmpty() const { return moments.empty(); }

    std::optional<double> solve() {
        ceres::Solver::Options how;
        how.linear_solver_type = ceres::DENSE_SCHUR;
        how.linear_solver_ordering = std::make_shared<ceres::ParameterBlockOrdering>(ordering());
        how.max_num_iterations = options.iterations;
        how.function_tolerance = options.tolerance;
        how.parameter_tolerance = options.tolerance;
        how.gradient_tolerance = 1e-14;
        if (options.isNear) {
            how.initial_trust_region_radius = nearRadius;
        }
        how.num_threads = 1;  // several threads would sum in an order that differs from run to run
        how.logging_type = ceres::SILENT;
        EndWhenCancelled endWhenCancelled;
        how.callbacks.push_back(&endWhenCancelled);
        ceres::Solver::Summary summary;
        ceres::Solve(how, &problem, &summary);
        if (summary.termination_type == ceres::USER_FAILURE) {
            throw Cancelled();
        }
        return summary.IsSolutionUsable() ? std::optional<double>(summary.final_cost) : std::nullopt;
    }

private:
    void addSighting(const Sighting &sighting) {
        SightingResiduals residuals(observations, sighting, options.robustScale);
        if (residuals.corners() == 0) {
            return;
        }
        const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
        cameras.insert(photograph.camera);
        moments.insert(photograph.moment);
        prints.insert(sighting.print);
        std::vector<double *> blocks;
        for (const double *block : blocksOf(observations, sighting, estimate)) {
            blocks.push_back(const_cast<double *>(block));  // points into `estimate`, which is not const
        }
        problem.AddResidualBlock(new SightingCost(std::move(residuals)), nullptr, blocks);
    }

    void restrictPrint(int print) {
        const auto i = size_t(print);
        if (estimate.isOrigin(print) || !options.freedom.prints) {
            problem.SetParameterBlockConstant(estimate.worldFromPrint[i].data());
        }
        double *numbers = estimate.shapes[i].numbers.data();
        const std::vector<int> free = options.freedom.shapes.empty() ? std::vector<int>() : options.freedom.shapes[i];
        if (free.empty()) {
            problem.SetParameterBlockConstant(numbers);
            return;
        }
        problem.AddResidualBlock(new PrintPriorCost(free, options.freedom.priorOf(print)), nullptr, numbers);
        holdAllBut(numbers, PrintShape::count, free);
    }

    void restrictCamera(int camera) {
        const auto i = size_t(camera);
        if (rigOrigin(observations, camera) == camera || !options.freedom.rig) {
            problem.SetParameterBlockConstant(estimate.cameraFromRig[i].data());
        }
        const Eigen::VectorXd prior = lensPrior(observations.cameras[i], estimate.intrinsics[i]);
        if (!prior.isZero(0)) {
            problem.AddResidualBlock(new LensPriorCost(prior), nullptr, estimate.intrinsics[i].data());
        }
        if (!options.freedom.intrinsics) {
            problem.SetParameterBlockConstant(estimate.intrinsics[i].data());
        } else if (!options.freedom.coefficients) {
            holdAllBut(estimate.intrinsics[i].data(), int(estimate.intrinsics[i].size()), {0, 1, 2, 3});
        }
    }

    void holdAllBut(double *block, int size, const std::vector<int> &free) {
        std::vector<int> held;
        for (int number = 0; number < size; number++) {
            if (std::find(free.begin(), free.end(), number) == free.end()) {
                held.push_back(number);
            }
        }
        if (!held.empty()) {
            problem.SetManifold(block, new ceres::SubsetManifold(size, held));
        }
    }

    // Moments are eliminated first, because there are many of them and each sighting belongs to only one moment. Ceres
    // takes the blocks of a group in the order of their addresses, and this order would differ from run to run. So each
    // block has a group of its own. Only the moments share a group: they are in one array and so keep their order.
    ceres::ParameterBlockOrdering ordering() const {
        ceres::ParameterBlockOrdering order;
        int group = 0;
        for (const int moment : moments) {
            order.AddElementToGroup(estimate.rigFromWorld[size_t(moment)].data(), group);
        }
        for (const int camera : cameras) {
            order.AddElementToGroup(estimate.intrinsics[size_t(camera)].data(), ++group);
            order.AddElementToGroup(estimate.cameraFromRig[size_t(camera)].data(), ++group);
        }
        for (const int print : prints) {
            order.AddElementToGroup(estimate.worldFromPrint[size_t(print)].data(), ++group);
            order.AddElementToGroup(estimate.shapes[size_t(print)].numbers.data(), ++group);
        }
        return order;
    }

    const Observations &observations;
    const SolveOptions &options;
    Estimate &estimate;
    ceres::Problem problem;
    std::set<int> cameras, moments, prints;
};

}  // namespace

bool hasPose(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
    const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
    return estimate.hasCamera[size_t(photograph.camera)] && estimate.hasMoment[size_t(photograph.moment)] &&
           estimate.groups[size_t(sighting.print)] >= 0;
}

bool takesPart(const Observations &observations, const Sighting &sighting, const Estimate &estimate) {
    return sighting.isUsed && hasPose(observations, sighting, estimate);
}

std::optional<double> solveJointly(const Observations &observations, const SolveOptions &options, Estimate &estimate) {
    Estimate improved = estimate;
    JointProblem problem(observations, options, improved);
    if (problem.isEmpty()) {
        return std::nullopt;
    }
    const std::optional<double> cost = problem.solve();
    if (cost) {
        estimate = std::move(improved);
    }
    return cost;
}

}  // namespace calibration
