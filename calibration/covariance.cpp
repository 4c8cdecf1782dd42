#include "calibration/covariance.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <array>
#include <cmath>
#include <map>
#include <numeric>

#include "calibration/sighting_residuals.h"

namespace calibration {

namespace {

using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

// Indices of free parameters: among the shared ones, or among the columns of a block's derivatives.
using Places = std::vector<int>;

// A moment's own part of the normal equations, and the part that couples it with the shared parameters, which are those
// of cameras and prints.
struct MomentEquations {
    Eigen::Matrix<double, 6, 6> own = Eigen::Matrix<double, 6, 6>::Zero();
    Eigen::Matrix<double, Eigen::Dynamic, 6> link;  // one row for each shared parameter
};

class NormalEquations {
public:
    explicit NormalEquations(int size) : shared(Eigen::MatrixXd::Zero(size, size)) {}

    // Adds one sighting: its derivatives by the shared parameters at the given indices, and by its moment's pose.
    void add(int moment, const Eigen::MatrixXd &byShared, const Places &places, const RowMajor &byMoment) {
        MomentEquations &equations = moments[moment];
        if (equations.link.size() == 0) {
            equations.link.setZero(shared.rows(), 6);
        }
        equations.own.noalias() += byMoment.transpose() * byMoment;
        const Eigen::MatrixXd products = byShared.transpose() * byShared;
        const Eigen::MatrixXd links = byShared.transpose() * byMoment;
        for (size_t i = 0; i < places.size(); i++) {
            equations.link.row(places[i]) += links.row(Eigen::Index(i));
            for (size_t j = 0; j < places.size(); j++) {
                shared(places[i], places[j]) += products(Eigen::Index(i), Eigen::Index(j));
            }
        }
    }

    void addPrior(int place, double sigma) { shared(place, place) += 1 / (sigma * sigma); }
    int momentCount() const { return int(moments.size()); }

    // The inverse of the shared part once the moments are eliminated; nothing if it is singular.
    std::optional<Eigen::MatrixXd> sharedCovariance() const {
        Eigen::MatrixXd reduced = shared;
        for (const auto &[moment, equations] : moments) {
            const Eigen::LDLT<Eigen::Matrix<double, 6, 6>> own(equations.own);
            if (own.info() != Eigen::Success || !own.isPositive()) {
                return std::nullopt;
            }
            reduced.noalias() -= equations.link * own.solve(equations.link.transpose());
        }
        // The scaling makes the test for a singular matrix independent of the parameters' units.
        Eigen::VectorXd scale = shared.diagonal();
        for (double &value : scale) {
            value = value > 0 ? 1 / std::sqrt(value) : 0;
        }
        const Eigen::MatrixXd scaled = scale.asDiagonal() * reduced * scale.asDiagonal();
        const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver((scaled + scaled.transpose()) / 2);
        constexpr double singular = 1e-13;
        if (scaled.rows() > 0 && (solver.info() != Eigen::Success || !(solver.eigenvalues()(0) > singular))) {
            return std::nullopt;
        }
        const Eigen::MatrixXd root =
            scale.asDiagonal() * solver.eigenvectors() * solver.eigenvalues().cwiseSqrt().cwiseInverse().asDiagonal();
        return Eigen::MatrixXd(root * root.transpose());
    }

private:
    Eigen::MatrixXd shared;
    std::map<int, MomentEquations> moments;
};

Places consecutive(int first, int size) {
    Places places{};
    places.resize(size_t(size));
    std::iota(places.begin(), places.end(), first);
    return places;
}

}  // namespace

Eigen::MatrixXd Covariance::print(int number) const {
    const PrintRanges &ranges = prints[size_t(number)];
    // The two ranges follow each other.
    return blockAt({ranges.pose.first, ranges.pose.size + ranges.shape.size});
}

std::optional<Covariance> covarianceOf(const Observations &observations, const Freedom &freedom,
                                       const Estimate &estimate) {
    std::vector<bool> cameraIsSeen(observations.cameras.size(), false);
    std::vector<bool> printIsSeen(observations.prints.size(), false);
    for (const Sighting &sighting : observations.sightings) {
        if (takesPart(observations, sighting, estimate)) {
            cameraIsSeen[size_t(observations.photographs[size_t(sighting.photograph)].camera)] = true;
            printIsSeen[size_t(sighting.print)] = true;
        }
    }
    Covariance result;
    int size = 0;
    const auto take = [&](int count) {
        size += count;
        return Covariance::Range{size - count, count};
    };
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

    NormalEquations equations(size);
    double squares = 0;
    double rows = 0;
    for (const Sighting &sighting : observations.sightings) {
        const SightingResiduals residuals(observations, sighting, 0);
        if (!takesPart(observations, sighting, estimate) || residuals.corners() == 0) {
            continue;
        }
        std::array<RowMajor, blockCount> jacobians;
        std::array<double *, blockCount> pointers{};
        for (int block = 0; block < blockCount; block++) {
            jacobians[size_t(block)].resize(residuals.rows(), residuals.blockSize(Block(block)));
            pointers[size_t(block)] = jacobians[size_t(block)].data();
        }
        Eigen::VectorXd values(residuals.rows());
        if (!residuals.evaluate(blocksOf(observations, sighting, estimate), values.data(), pointers.data())) {
            return std::nullopt;
        }
        squares += values.squaredNorm();
        rows += residuals.rows();
        const Photograph &photograph = observations.photographs[size_t(sighting.photograph)];
        const Covariance::CameraRanges &camera = result.cameras[size_t(photograph.camera)];
        const Covariance::PrintRanges &print = result.prints[size_t(sighting.print)];
        Places places;
        Eigen::MatrixXd byShared(residuals.rows(),
                                 camera.intrinsics.size + camera.pose.size + print.pose.size + print.shape.size);
        const auto addColumns = [&](Covariance::Range range, Block block, const Places &columns) {
            for (int i = 0; i < range.size; i++) {
                byShared.col(Eigen::Index(places.size())) = jacobians[size_t(block)].col(columns[size_t(i)]);
                places.push_back(range.first + i);
            }
        };
        addColumns(camera.intrinsics, Block::Intrinsics, consecutive(0, camera.intrinsics.size));
        addColumns(camera.pose, Block::CameraFromRig, consecutive(0, 6));
        addColumns(print.pose, Block::WorldFromPrint, consecutive(0, 6));
        if (print.shape.size > 0) {
            addColumns(print.shape, Block::Shape, freedom.shapes[size_t(sighting.print)]);
        }
        equations.add(photograph.moment, byShared, places, jacobians[size_t(Block::RigFromWorld)]);
        result.corners += residuals.corners();
    }
    for (size_t i = 0; i < observations.prints.size(); i++) {
        for (int number = 0; number < result.prints[i].shape.size; number++) {
            if (freedom.shapes[i][size_t(number)] < PrintShape::bend) {
                equations.addPrior(result.prints[i].shape.first + number, printPrior);
            }
        }
    }
    const std::optional<Eigen::MatrixXd> shared = equations.sharedCovariance();
    const double freeRows = rows - size - 6 * equations.momentCount();
    if (!shared || !(freeRows > 0)) {
        return std::nullopt;
    }
    result.factor = squares / freeRows;
    result.matrix = result.factor * *shared;
    return result;
}

}  // namespace calibration
