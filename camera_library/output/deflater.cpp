#include "camera_library/output/deflater.h"

#include <array>
#include <cstddef>
#include <new>
#include <stdexcept>

namespace lmlib64 {

namespace {

void *takeMemory(void * /*unused*/, unsigned count, unsigned size) noexcept {
    return ::operator new (std::size_t{count} * size, std::nothrow);
}
void giveBack(void * /*unused*/, void *memory) noexcept {
    ::operator delete(memory);
}

void setInput(z_stream &stream, std::string_view data) {
    stream.next_in = reinterpret_cast<z_const Bytef *>(const_cast<char *>(data.data()));
    stream.avail_in = static_cast<uInt>(data.size());
}

}  // namespace

Deflater::Deflater(Repetitions repetitions) {
    stream.zalloc = takeMemory;
    stream.zfree = giveBack;
    // deflateInit uses the same window bits and the same memory level.
    constexpr int windowBits = 15;
    constexpr int memoryLevel = 8;
    const int result = deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBits, memoryLevel,
                                    repetitions == Repetitions::Anywhere ? Z_DEFAULT_STRATEGY : Z_RLE);
    if (result == Z_MEM_ERROR) {
        throw std::bad_alloc();
    }
    if (result != Z_OK) {
        throw std::runtime_error("zlib cannot be used.");
    }
}

void Deflater::add(std::string_view data, std::string &to) {
    setInput(stream, data);
    run(Z_NO_FLUSH, to);
}

void Deflater::finish(std::string &to) {
    setInput(stream, {});
    run(Z_FINISH, to);
}

void Deflater::run(int flush, std::string &to) {
    std::array<char, 16384> ready{};
    do {
        stream.next_out = reinterpret_cast<Bytef *>(ready.data());
        stream.avail_out = ready.size();
        if (deflate(&stream, flush) == Z_STREAM_ERROR) {
            throw std::runtime_error("zlib has not compressed all data.");
        }
        to.append(ready.data(), ready.size() - stream.avail_out);
    } while (stream.avail_out == 0);
}

std::string Deflater::deflated(std::string_view data) {
    std::string result(deflateBound(&stream, static_cast<uLong>(data.size())), '\0');
    setInput(stream, data);
    stream.next_out = reinterpret_cast<Bytef *>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) {
        throw std::runtime_error("zlib has not compressed all data.");
    }
    result.resize(result.size() - stream.avail_out);
    return result;
}

}  // namespace lmlib64
