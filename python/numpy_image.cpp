#include "python/numpy_image.h"

#include <string>

namespace lmlib64_python {

namespace py = pybind11;

namespace {

int depthOf(const py::array &picture) {
    if (picture.dtype().is(py::dtype::of<std::uint8_t>())) {
        return CV_8U;
    }
    if (picture.dtype().is(py::dtype::of<std::uint16_t>())) {
        return CV_16U;
    }
    throw py::type_error("The picture's elements must be of type uint8 or uint16.");
}

// True if OpenCV can use the array without a copy. That is so if the values of each row are contiguous and every row
// lies behind the previous one in memory.
bool hasWholeRows(const py::array &picture, py::ssize_t channels) {
    const py::ssize_t pixel = channels * picture.itemsize();
    return (picture.ndim() == 2 || picture.strides(2) == picture.itemsize()) && picture.strides(1) == pixel &&
           picture.strides(0) >= picture.shape(1) * pixel;
}

}  // namespace

NumpyImage::NumpyImage(const py::array &picture) : array(picture) {
    const py::ssize_t channels = picture.ndim() == 3 ? picture.shape(2) : 1;
    const bool isPicture = (picture.ndim() == 2 || picture.ndim() == 3) && picture.shape(0) > 0 &&
                           picture.shape(1) > 0 && (channels == 1 || channels == 3 || channels == 4);
    if (!isPicture || picture.shape(0) > INT_MAX || picture.shape(1) > INT_MAX) {
        throw py::value_error(
            "The picture must have the shape (height, width) or (height, width, channels) with 1, 3 or 4 channels.");
    }
    const int depth = depthOf(picture);
    if (!hasWholeRows(picture, channels)) {
        array = py::array(py::module_::import("numpy").attr("ascontiguousarray")(picture));
    }
    // The cast is safe, because the reader does not change the pixels. cv::Mat has no constructor for constant data.
    matrix = cv::Mat(int(array.shape(0)), int(array.shape(1)), CV_MAKETYPE(depth, int(channels)),
                     const_cast<void *>(array.data()), size_t(array.strides(0)));
}

}  // namespace lmlib64_python
