// The names of the files that SafeFiles writes beside its targets. They tell which process a file belongs to, so that
// the files of killed processes can be recognised, and nothing else can be taken for one.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace file_writing {

using ProcessNumber = std::uint32_t;

// .lmlib64-PROCESS-RANDOM.tmp, with two decimal numbers. It is short and independent of the target's name, which may
// already have the maximum length.
std::string newTemporaryName(ProcessNumber process, std::random_device &random);

// The number of the process in such a name; empty for any other file's name.
std::optional<ProcessNumber> writerOf(std::string_view name);

}  // namespace file_writing
