// The names of the files that SafeFiles writes beside its targets. A name states which process the file belongs to. So
// the files of killed processes can be recognised, and no other file is mistaken for one of them.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace file_writing {

using ProcessNumber = std::uint32_t;

// Returns .lmlib64-PROCESS-RANDOM.tmp, where PROCESS and RANDOM are decimal numbers. The name is short and independent
// of the target's name, which may already have the maximum length.
std::string newTemporaryName(ProcessNumber process, std::random_device &random);

// Returns the number of the process in such a name; empty if the name has any other form.
std::optional<ProcessNumber> writerOf(std::string_view name);

}  // namespace file_writing
