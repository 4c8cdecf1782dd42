// Reads the parameters of one pattern of "GenerateCalibrationPattern"; pattern_request.h describes them.
#pragma once

#include "camera_library/commands/parameter_reader.h"
#include "camera_library/pattern/pattern_description.h"

namespace lmlib64 {

// Throws CommandFailure for the first parameter that is not allowed. `encodingParameter` is the command's "Encoding".
PatternDescription readPatternDescription(const ParameterReader &reader, bool encodingParameter);

}  // namespace lmlib64
