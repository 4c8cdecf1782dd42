// Makes the sections of the report's page as HTML. A section without content is empty.
#pragma once

#include <string>

#include "calibration/report/report_page.h"

namespace calibration {

// The style sheet for screens in light and dark, and for paper.
const char *reportStyle();

// The numbers and figures of one camera.
std::string cameraSection(const Calibration &calibration, int camera);
// The poses of the cameras of each rig relative to each other.
std::string rigSection(const Calibration &calibration);
// The scene from above and from the right.
std::string sceneSection(const Calibration &calibration);
// The table of the prints: poses and shapes.
std::string printSection(const Calibration &calibration);
// The residuals of each photograph as bars, and the table of the photographs.
std::string photographSection(const Calibration &calibration, const ReportInput &input);

}  // namespace calibration
