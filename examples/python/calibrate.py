#!/usr/bin/env python3
"""calibrate.py GRID_SPACING PICTURE...: calibrates a camera from pictures of one pattern. Calibrates with OpenCV, then
with lmlib64, and prints OpenCV's rms error and the verdict of lmlib64. Writes OpenCV's result to camera.yaml in the
format of ROS."""
import sys

import cv2
import lmlib64

grid_spacing, files = float(sys.argv[1]), sys.argv[2:]
object_points, image_points = [], []
for file in files:
    picture = cv2.imread(file)
    for reading in lmlib64.read_patterns(picture, grid_spacing=grid_spacing):
        object_points.append(reading.object_points.astype("float32"))
        image_points.append(reading.image_points.astype("float32"))
height, width = picture.shape[:2]
rms, matrix, distortion, _, _ = cv2.calibrateCamera(object_points, image_points, (width, height), None, None)
print(f"{len(image_points)} views, rms {rms:.3f} pixels")

ours = lmlib64.calibrate(object_points, image_points, (width, height), lens="pinhole5")
print(ours.verdict)
rows = [matrix[0].tolist() + [0.0], matrix[1].tolist() + [0.0], [0.0, 0.0, 1.0, 0.0]]
with open("camera.yaml", "w", encoding="utf-8") as output:
    output.write(f"image_width: {width}\nimage_height: {height}\ncamera_name: camera\n"
                 f"camera_matrix: {{rows: 3, cols: 3, data: {matrix.ravel().tolist()}}}\n"
                 f"distortion_model: plumb_bob\n"
                 f"distortion_coefficients: {{rows: 1, cols: 5, data: {distortion.ravel().tolist()}}}\n"
                 f"rectification_matrix: {{rows: 3, cols: 3, data: [1, 0, 0, 0, 1, 0, 0, 0, 1]}}\n"
                 f"projection_matrix: {{rows: 3, cols: 4, data: {sum(rows, [])}}}\n")
