#include "file_writing/temporary_name.h"

#include <charconv>
#include <system_error>

namespace file_writing {

namespace {

constexpr std::string_view prefix = ".lmlib64-";
constexpr std::string_view suffix = ".tmp";

}  // namespace

std::string newTemporaryName(ProcessNumber process, std::random_device &random) {
    std::string name(prefix);
    return name.append(std::to_string(process) + "-" + std::to_string(random())).append(suffix);
}

std::optional<ProcessNumber> writerOf(std::string_view name) {
    if (name.size() <= prefix.size() + suffix.size() || name.substr(0, prefix.size()) != prefix ||
        name.substr(name.size() - suffix.size()) != suffix) {
        return {};
    }
    const char *const end = name.data() + name.size() - suffix.size();
    ProcessNumber process = 0;
    std::uint32_t random = 0;
    const auto [hyphen, processError] = std::from_chars(name.data() + prefix.size(), end, process);
    if (processError != std::errc() || process == 0 || hyphen == end || *hyphen != '-') {
        return {};
    }
    const auto [last, randomError] = std::from_chars(hyphen + 1, end, random);
    return randomError == std::errc() && last == end ? std::optional(process) : std::nullopt;
}

}  // namespace file_writing
