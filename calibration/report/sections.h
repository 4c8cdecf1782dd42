// Makes the sections of the report's page as HTML. If there is nothing to show in a section, its text is empty.
#pragma once

#include <string>

#include "calibration/report/report_page.h"

namespace calibration {

// Returns the style sheet. It has light and dark colours for screens, and a layout and colours for paper.
const char *reportStyle();

// Returns the numbers and figures of one camera.
std::string cameraSection(const Calibration &calibration, int camera);
// Returns the poses of the cameras of each rig relative to each other.
std::string rigSection(const Calibration &calibration);
// Returns the scene from above and from the right.
std::string sceneSection(const Calibration &calibration);
// Returns the tables of the poses and shapes of the prints.
std::string printSection(const Calibration &calibration);
// Returns the residuals of each photograph as bars, and the table of the photographs.
std::string photographSection(const Calibration &calibration, const ReportInput &input);

}  // namespace calibration
