#include "calibration/output/lens_files.h"

#include "calibration/output/number_text.h"

namespace calibration {

namespace {

constexpr double metresPerMillimetre = 1e-3;
// ROS's plumb_bob always has five coefficients, so LensModel::Pinhole4 gets a zero as the fifth.
constexpr int rosCoefficients = 5;
constexpr int colmapCoefficients = 8;  // FULL_OPENCV has eight

std::string listText(const double *numbers, int count, const char *separator = ", ") {
    std::string text;
    for (int i = 0; i < count; i++) {
        text += (i == 0 ? "" : separator) + numberText(numbers[i]);
    }
    return text;
}

// Returns the distortion coefficients, followed by zeros if there are fewer than `least`.
std::vector<double> coefficientsOf(const SolvedCamera &camera, int least = 0) {
    std::vector<double> coefficients(camera.intrinsics.data() + pinholeParameters,
                                     camera.intrinsics.data() + camera.intrinsics.size());
    coefficients.resize(std::max(coefficients.size(), size_t(least)), 0.0);
    return coefficients;
}

std::string coefficientText(const SolvedCamera &camera, int least = 0) {
    const std::vector<double> coefficients = coefficientsOf(camera, least);
    return listText(coefficients.data(), int(coefficients.size()));
}

// Returns the camera matrix, row by row. If `hasFourth` is true, the matrix has a fourth column of zeros.
std::string matrixText(const Eigen::VectorXd &k, bool hasFourth = false) {
    const std::string zero = hasFourth ? ", 0.0" : "";
    return numberText(k[0]) + ", 0.0, " + numberText(k[2]) + zero + ", 0.0, " + numberText(k[1]) + ", " +
           numberText(k[3]) + zero + ", 0.0, 0.0, 1.0" + zero;
}

// Puts a text in double quotes for YAML.
std::string quoted(const std::string &text) {
    std::string result = "\"";
    for (const char c : text) {
        result += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return result + "\"";
}

std::string opencvMatrix(const char *name, int rows, int columns, const std::string &data) {
    return std::string(name) + ": !!opencv-matrix\n   rows: " + std::to_string(rows) +
           "\n   cols: " + std::to_string(columns) + "\n   dt: d\n   data: [ " + data + " ]\n";
}

std::string rosMatrix(const char *name, int rows, int columns, const std::string &data) {
    return std::string(name) + ":\n  rows: " + std::to_string(rows) + "\n  cols: " + std::to_string(columns) +
           "\n  data: [" + data + "]\n";
}

std::string sizeText(const Camera &camera) {
    return "image_width: " + std::to_string(camera.width) + "\nimage_height: " + std::to_string(camera.height) + "\n";
}

const char *rosModel(LensModel lens) {
    switch (lens) {
        case LensModel::Pinhole4:
        case LensModel::Pinhole5:
            return "plumb_bob";
        case LensModel::Pinhole8:
            return "rational_polynomial";
        case LensModel::Fisheye:
            return "equidistant";
        case LensModel::Pinhole12:
            break;
    }
    return nullptr;
}

const char *opencvModel(LensModel lens) {
    switch (lens) {
        case LensModel::Pinhole4:
        case LensModel::Pinhole5:
            return "plumb_bob";
        case LensModel::Pinhole8:
            return "rational_polynomial";
        case LensModel::Pinhole12:
            return "thin_prism";
        case LensModel::Fisheye:
            return "fisheye";
    }
    return nullptr;
}

const char *colmapModel(LensModel lens) {
    switch (lens) {
        case LensModel::Pinhole4:
            return "OPENCV";
        case LensModel::Pinhole5:
        case LensModel::Pinhole8:
            return "FULL_OPENCV";
        case LensModel::Fisheye:
            return "OPENCV_FISHEYE";
        case LensModel::Pinhole12:
            break;
    }
    return nullptr;
}

// Returns the entry with the 4 x 4 matrix that takes points from the previous camera's coordinate system to this
// camera's, with the translation in metres.
std::string kalibrPose(const RigidMotion &motion) {
    const Eigen::Matrix3d rotation = rotationMatrix(motion.rotation);
    std::string text = "  T_cn_cnm1:\n";
    for (int row = 0; row < 3; row++) {
        const Eigen::Vector4d numbers(rotation(row, 0), rotation(row, 1), rotation(row, 2),
                                      motion.translation[row] * metresPerMillimetre);
        text += "    - [" + listText(numbers.data(), 4) + "]\n";
    }
    return text + "    - [0.0, 0.0, 0.0, 1.0]\n";
}

}  // namespace

std::string opencvFile(const SolvedCamera &camera) {
    return "%YAML:1.0\n---\n" + sizeText(camera.camera) + "camera_name: " + quoted(camera.camera.name) + "\n" +
           opencvMatrix("camera_matrix", 3, 3, matrixText(camera.intrinsics)) +
           "distortion_model: " + opencvModel(camera.camera.lens) + "\n" +
           opencvMatrix("distortion_coefficients", 1, coefficientCount(camera.camera.lens), coefficientText(camera));
}

std::string rosFile(const SolvedCamera &camera) {
    const char *model = rosModel(camera.camera.lens);
    if (model == nullptr) {
        return {};
    }
    const int least = camera.camera.lens == LensModel::Fisheye ? 0 : rosCoefficients;
    return sizeText(camera.camera) + "camera_name: " + quoted(camera.camera.name) + "\n" +
           rosMatrix("camera_matrix", 3, 3, matrixText(camera.intrinsics)) + "distortion_model: " + model + "\n" +
           rosMatrix("distortion_coefficients", 1, int(coefficientsOf(camera, least).size()),
                     coefficientText(camera, least)) +
           rosMatrix("rectification_matrix", 3, 3, "1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0") +
           rosMatrix("projection_matrix", 3, 4, matrixText(camera.intrinsics, true));
}

std::string mrcalFile(const SolvedCamera &camera) {
    if (camera.camera.lens == LensModel::Fisheye) {
        return {};
    }
    Eigen::Matrix<double, 6, 1> pose;
    pose << camera.cameraFromRig.rotation, camera.cameraFromRig.translation * metresPerMillimetre;
    return "{\n    'lensmodel':  'LENSMODEL_OPENCV" + std::to_string(coefficientCount(camera.camera.lens)) +
           "',\n\n    # intrinsics are fx,fy,cx,cy,distortion0,distortion1,....\n    'intrinsics': [ " +
           listText(camera.intrinsics.data(), int(camera.intrinsics.size())) +
           " ],\n\n    # extrinsics are rt_fromref: rotation vector, then translation in metres\n    'extrinsics': [ " +
           listText(pose.data(), 6) + " ],\n\n    'imagersize': [ " + std::to_string(camera.camera.width) + ", " +
           std::to_string(camera.camera.height) + " ],\n}\n";
}

bool kalibrHas(LensModel lens) {
    return lens == LensModel::Pinhole4 || lens == LensModel::Fisheye;
}

std::string kalibrFile(const std::vector<SolvedCamera> &cameras) {
    std::string text;
    const SolvedCamera *before = nullptr;
    int number = 0;
    for (const SolvedCamera &camera : cameras) {
        if (!kalibrHas(camera.camera.lens)) {
            continue;
        }
        text += "# " + camera.camera.name + "\ncam" + std::to_string(number) + ":\n";
        if (before != nullptr) {
            text += kalibrPose(camera.cameraFromRig * before->cameraFromRig.inverse());
        }
        const bool isFisheye = camera.camera.lens == LensModel::Fisheye;
        text += "  camera_model: pinhole\n  distortion_coeffs: [" + coefficientText(camera) +
                "]\n  distortion_model: " + (isFisheye ? "equidistant" : "radtan") + "\n  intrinsics: [" +
                listText(camera.intrinsics.data(), pinholeParameters) + "]\n  resolution: [" +
                std::to_string(camera.camera.width) + ", " + std::to_string(camera.camera.height) +
                "]\n  rostopic: /cam" + std::to_string(number) + "/image_raw\n";
        before = &camera;
        number++;
    }
    return text;
}

bool colmapHas(LensModel lens) {
    return colmapModel(lens) != nullptr;
}

std::string colmapFile(const std::vector<SolvedCamera> &cameras) {
    std::string lines;
    std::string names;
    int number = 0;
    for (const SolvedCamera &camera : cameras) {
        const char *model = colmapModel(camera.camera.lens);
        if (model == nullptr) {
            continue;
        }
        const bool isFull = std::string(model) == "FULL_OPENCV";
        Eigen::Vector4d pinhole = camera.intrinsics.head<pinholeParameters>();
        pinhole.tail<2>().array() += 0.5;  // in COLMAP, the centre of the top-left pixel is at (0.5, 0.5)
        const std::vector<double> coefficients = coefficientsOf(camera, isFull ? colmapCoefficients : 0);
        number++;
        names += "# Camera " + std::to_string(number) + " is " + camera.camera.name + ".\n";
        lines += std::to_string(number) + " " + model + " " + std::to_string(camera.camera.width) + " " +
                 std::to_string(camera.camera.height) + " " + listText(pinhole.data(), pinholeParameters, " ") + " " +
                 listText(coefficients.data(), int(coefficients.size()), " ") + "\n";
    }
    if (lines.empty()) {
        return {};
    }
    return "# Camera list with one line of data per camera:\n#   CAMERA_ID, MODEL, WIDTH, HEIGHT, PARAMS[]\n" + names +
           lines;
}

}  // namespace calibration
