// Finds out which camera took each photograph, and which photographs were taken at the same moment.
#pragma once

#include <string>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// The information about the origin of a photograph.
struct PhotographOrigin {
    std::string path;
    std::string camera;      // the user's name for the camera, or empty
    std::string exifCamera;  // as exifCamera() returns it (exif_camera.h)
    int width = 0;           // pixels; 0 if the photograph could not be loaded
    int height = 0;
};

struct CameraGroups {
    std::vector<Camera> cameras;
    // The camera of each photograph, as an index of `cameras`; -1 if it is not known. A photograph that is left out has
    // a camera only if the user named that camera.
    std::vector<int> cameraOf;
    // The reason why each photograph is left out, such as "has 320 x 240 pixels, ...". Empty if the photograph is used
    // or could not be loaded.
    std::vector<std::string> reasons;
};

// Photographs for which the user names a camera belong to that camera, and only those of the most frequent size are
// kept. Photographs for which the user names no camera are grouped by size and by the camera's name in EXIF, and each
// group is a camera. A group of at most three photographs is left out if another of these groups has at least five
// times as many. These cameras are named "camera", "camera-2" and so on, in the order of their first photographs; names
// that the user gave are skipped.
CameraGroups groupByCamera(const std::vector<PhotographOrigin> &photographs);

// Returns the moment of each photograph, counted from 0. Photographs of different cameras belong to the same moment if
// they have the same key. For all photographs, the key is the first of the following that is usable:
// - the file name without its ending;
// - the last number in the file name (left01.jpg and right01.jpg);
// - the position among the photographs of the same camera.
// Names or numbers are usable as keys if every photograph has a key, if no two photographs of the same camera have the
// same key, and if each camera except the first shares at least half of its keys with other cameras. Positions are
// usable if all cameras have the same number of photographs; otherwise, std::runtime_error is thrown. `cameraOf` is -1
// for photographs that do not count; their moments have no meaning.
std::vector<int> momentsOfRig(const std::vector<std::string> &paths, const std::vector<int> &cameraOf);

}  // namespace calibration
