// Compresses data in zlib's format. zlib takes its memory from operator new, like the rest of the library, so that
// tests of failing allocations reach zlib, too. Running out of memory throws std::bad_alloc.
#pragma once

#include <zlib.h>

#include <string>
#include <string_view>

namespace lmlib64 {

// The repetitions that the compression searches for: any, or only the same byte many times in a row. Searching for the
// second kind is much faster. If the data consists mostly of long runs of one byte, the compressed data is about as
// small as with the first kind.
enum class Repetitions { Anywhere, OfOneByte };

// One stream of compressed data. The same data, added in the same portions, gives the same bytes. Every function may
// throw std::bad_alloc.
class Deflater {
public:
    explicit Deflater(Repetitions repetitions);
    ~Deflater() { deflateEnd(&stream); }
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;

    // Compresses more data. The part of the stream that is ready is appended to `to`.
    void add(std::string_view data, std::string &to);

    // Appends the rest of the stream. Nothing may be added after that.
    void finish(std::string &to);

    // Compresses the data as a whole stream. Nothing may have been added to the stream before, and nothing may be added
    // after that.
    std::string deflated(std::string_view data);

private:
    void run(int flush, std::string &to);

    z_stream stream{};
};

}  // namespace lmlib64
