// Compresses data in zlib's format. It allocates with operator new like all other code, so that running out of memory
// is handled in one way.
#pragma once

#include <zlib.h>

#include <string>
#include <string_view>

namespace lmlib64 {

// How the data is searched for repetitions: anywhere, or only for the same byte many times in a row, which is much
// faster and as good for data that mostly repeats one byte.
enum class Repetitions { Anywhere, OfOneByte };

// One stream of compressed data. The same data in the same portions gives the same bytes. Every function throws
// std::bad_alloc.
class Deflater {
public:
    explicit Deflater(Repetitions repetitions);
    ~Deflater() { deflateEnd(&stream); }
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;

    // Compresses more data, and appends what is ready to `to`.
    void add(std::string_view data, std::string &to);

    // Appends the rest of the stream. Nothing may be added after that.
    void finish(std::string &to);

    // All of a stream at once; nothing else may have been added to it.
    std::string deflated(std::string_view data);

private:
    void run(int flush, std::string &to);

    z_stream stream{};
};

}  // namespace lmlib64
