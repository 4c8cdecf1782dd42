#!/usr/bin/env python3
"""use_camera_info.py NAME.camera_info.yaml PICTURE X Y Z: uses a calibration file that calibrate_cameras wrote. Works
like image_proc and image_geometry of ROS, but does not need ROS. Removes the distortion from the picture and writes the
result to undistorted.png. Also prints where the point (X, Y, Z) appears, in pixels, in the picture and in
undistorted.png. X, Y and Z are in metres in the camera's coordinate system."""
import sys

import cv2
import numpy
import yaml

with open(sys.argv[1], encoding="utf-8") as file:
    info = yaml.safe_load(file)


def matrix(name):
    return numpy.array(info[name]["data"], float).reshape(info[name]["rows"], info[name]["cols"])


size = (info["image_width"], info["image_height"])
camera, distortion, projection = matrix("camera_matrix"), matrix("distortion_coefficients"), matrix("projection_matrix")
lens = cv2.fisheye if info["distortion_model"] == "equidistant" else cv2

picture = cv2.imread(sys.argv[2])
if picture.shape[1::-1] != size:
    sys.exit(f"{sys.argv[2]} does not have the {size[0]} x {size[1]} pixels of the calibration")
maps = lens.initUndistortRectifyMap(camera, distortion, matrix("rectification_matrix"), projection[:, :3], size,
                                    cv2.CV_32FC1)
cv2.imwrite("undistorted.png", cv2.remap(picture, *maps, cv2.INTER_LINEAR))

point = numpy.array([float(number) for number in sys.argv[3:6]])
seen = lens.projectPoints(point.reshape(1, 1, 3), numpy.zeros(3), numpy.zeros(3), camera, distortion)[0].ravel()
straight = projection @ numpy.append(matrix("rectification_matrix") @ point, 1)
print("in the picture %.2f %.2f" % tuple(seen))
print("in undistorted.png %.2f %.2f" % tuple(straight[:2] / straight[2]))
