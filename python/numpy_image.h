// Lets OpenCV use the pictures in numpy arrays.
#pragma once

#include <pybind11/numpy.h>

#include <opencv2/core.hpp>

namespace lmlib64_python {

// A picture for the reader. The shape of the array is height x width or height x width x channels, with 1, 3 (BGR) or 4
// (BGRA) channels. The elements are uint8 or uint16.
//
// `matrix` uses the memory of `array`, so `array` must exist, and nobody may write to it, as long as `matrix` is used.
// `array` is the given picture itself if each of its rows is contiguous, even if there are gaps between the rows, as in
// a part of a larger picture. Otherwise `array` is a copy. Throws pybind11::value_error for another shape and
// pybind11::type_error for another type of element.
struct NumpyImage {
    explicit NumpyImage(const pybind11::array &picture);

    pybind11::array array;
    cv::Mat matrix;
};

}  // namespace lmlib64_python
