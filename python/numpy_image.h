// Lets OpenCV use the pictures in numpy arrays.
#pragma once

#include <pybind11/numpy.h>

#include <opencv2/core.hpp>

namespace lmlib64_python {

// A picture for the reader: height x width, or height x width x channels (1, 3 as BGR, 4 as BGRA), of uint8 or uint16.
// `matrix` uses the memory of `array`, so it is valid as long as `array` exists and nobody writes to this memory. Gaps
// between rows are allowed, as in a part of a larger picture; any other layout is copied. Throws pybind11::value_error
// for another shape and pybind11::type_error for another type of element.
struct NumpyImage {
    explicit NumpyImage(const pybind11::array &picture);

    pybind11::array array;
    cv::Mat matrix;
};

}  // namespace lmlib64_python
