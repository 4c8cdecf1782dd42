#include "shell/standard_streams.h"

namespace shell {

void prepareStandardStreams() {}

}  // namespace shell
