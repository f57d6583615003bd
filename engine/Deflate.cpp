// Deflate over two libraries: libdeflate for whole buffers, because it is several times faster, and zlib for pieces.
#include "engine/Deflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

namespace zavo::pdf {

namespace {

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};
struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const { libdeflate_free_decompressor(decompressor); }
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;
using Decompressor = std::unique_ptr<libdeflate_decompressor, FreeDecompressor>;

Compressor MakeCompressor(int level) {
    Compressor compressor(libdeflate_alloc_compressor(level));
    if (!compressor) throw std::bad_alloc();
    return compressor;
}

// Of the rows before any predictor: how many bytes a row and a whole pixel take.
struct RowLayout {
    std::size_t row;
    std::size_t pixel;
};

RowLayout MakeRowLayout(int colors, int bitsPerComponent, int columns) {
    constexpr int maxColors = 256;  // a row's bits stay far from overflow
    const bool known = bitsPerComponent == 1 || bitsPerComponent == 2 || bitsPerComponent == 4 ||
                       bitsPerComponent == 8 || bitsPerComponent == 16;
    if (!known || colors < 1 || colors > maxColors || columns < 1) throw PdfError("a predictor with impossible rows");
    const std::uint64_t pixelBits = static_cast<std::uint64_t>(colors) * static_cast<std::uint64_t>(bitsPerComponent);
    const std::uint64_t rowBits = pixelBits * static_cast<std::uint64_t>(columns);
    return {static_cast<std::size_t>((rowBits + 7) / 8), static_cast<std::size_t>((pixelBits + 7) / 8)};
}

std::uint8_t Byte(char c) { return static_cast<std::uint8_t>(c); }
char Sum(char a, int b) { return static_cast<char>(Byte(a) + b); }

int Paeth(int left, int up, int upLeft) {
    const int estimate = left + up - upLeft;
    const int toLeft = std::abs(estimate - left);
    const int toUp = std::abs(estimate - up);
    const int toUpLeft = std::abs(estimate - upLeft);
    if (toLeft <= toUp && toLeft <= toUpLeft) return left;
    return toUp <= toUpLeft ? up : upLeft;
}

// Undoes a PNG filter in place. `above` is the row before, of at least `size` bytes, or null for the first row.
void UndoPngRow(int filter, char* row, const char* above, std::size_t size, std::size_t pixel) {
    const auto left = [&](std::size_t i) { return i >= pixel ? Byte(row[i - pixel]) : 0; };
    const auto up = [&](std::size_t i) { return above != nullptr ? Byte(above[i]) : 0; };
    const auto upLeft = [&](std::size_t i) { return above != nullptr && i >= pixel ? Byte(above[i - pixel]) : 0; };
    switch (filter) {
        case 0: break;
        case 1:
            for (std::size_t i = pixel; i < size; ++i) row[i] = Sum(row[i], left(i));
            break;
        case 2:
            if (above == nullptr) break;
            for (std::size_t i = 0; i < size; ++i) row[i] = Sum(row[i], Byte(above[i]));
            break;
        case 3:
            for (std::size_t i = 0; i < size; ++i) row[i] = Sum(row[i], (left(i) + up(i)) / 2);
            break;
        case 4:
            for (std::size_t i = 0; i < size; ++i) row[i] = Sum(row[i], Paeth(left(i), up(i), upLeft(i)));
            break;
        default: throw PdfError("a row with an unknown PNG filter");
    }
}

std::string UndoPng(std::string_view bytes, const RowLayout& layout) {
    std::string plain;
    plain.reserve(bytes.size());
    const char* above = nullptr;  // in `plain`, which does not move
    while (!bytes.empty()) {
        const int filter = Byte(bytes.front());
        bytes.remove_prefix(1);
        const std::size_t size = std::min(layout.row, bytes.size());
        plain.append(bytes.substr(0, size));
        bytes.remove_prefix(size);
        char* row = plain.data() + plain.size() - size;
        UndoPngRow(filter, row, above, size, layout.pixel);
        above = row;
    }
    return plain;
}

std::string UndoTiff(std::string_view bytes, const RowLayout& layout) {
    std::string plain(bytes);
    for (std::size_t start = 0; start < plain.size();) {
        const std::size_t size = std::min(layout.row, plain.size() - start);
        for (std::size_t i = layout.pixel; i < size; ++i) {
            plain[start + i] = Sum(plain[start + i], Byte(plain[start + i - layout.pixel]));
        }
        start += size;
    }
    return plain;
}

}  // namespace

std::string Compress(std::string_view bytes, int level) {
    const Compressor compressor = MakeCompressor(level);
    std::string packed;
    packed.resize(libdeflate_zlib_compress_bound(compressor.get(), bytes.size()));
    packed.resize(libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), packed.data(), packed.size()));
    return packed;
}

std::string Inflate(std::string_view bytes, std::size_t limit) {
    const Decompressor decompressor(libdeflate_alloc_decompressor());
    if (!decompressor) throw std::bad_alloc();

    // Most streams unpack to less than the first guess; each further try starts anew.
    constexpr std::size_t factor = 4;
    constexpr std::size_t smallest = 1024;
    const auto larger = [limit](std::size_t size) { return size < limit / factor ? size * factor : limit; };
    std::string plain;
    for (std::size_t size = std::min(limit, larger(std::max(smallest, bytes.size())));; size = larger(size)) {
        plain.clear();  // so that growing does not copy
        plain.resize(size);
        std::size_t consumed = 0;
        std::size_t produced = 0;
        switch (libdeflate_zlib_decompress_ex(decompressor.get(), bytes.data(), bytes.size(), plain.data(), size,
                                              &consumed, &produced)) {
            case LIBDEFLATE_SUCCESS:
                plain.resize(produced);
                if (plain.capacity() / 2 > produced) plain.shrink_to_fit();
                return plain;
            case LIBDEFLATE_INSUFFICIENT_SPACE:
                if (size == limit) throw PdfTooLarge("a stream unpacks to more than is taken");
                break;
            default: throw PdfError("a compressed stream is damaged");
        }
    }
}

std::string UndoPredictor(std::string_view bytes, int predictor, int colors, int bitsPerComponent, int columns) {
    if (predictor == 1) return std::string(bytes);
    const RowLayout layout = MakeRowLayout(colors, bitsPerComponent, columns);
    if (predictor >= 10 && predictor <= 15) return UndoPng(bytes, layout);
    if (predictor == 2 && bitsPerComponent == 8) return UndoTiff(bytes, layout);
    throw PdfError("an unknown predictor");
}

bool LooksCompressible(std::string_view bytes) {
    constexpr std::size_t window = std::size_t{64} << 10;
    std::array<std::string_view, 3> samples = {bytes};
    if (bytes.size() > samples.size() * window) {
        samples = {bytes.substr(0, window), bytes.substr((bytes.size() - window) / 2, window),
                   bytes.substr(bytes.size() - window)};
    }
    std::size_t plain = 0;
    std::size_t packed = 0;
    for (const std::string_view sample : samples) {
        plain += sample.size();
        if (!sample.empty()) packed += Compress(sample, 1).size();
    }
    return packed * 100 < plain * 95;
}

struct DeflateStream::State {
    z_stream stream = {};
    std::array<char, std::size_t{64} << 10> packed;
};

DeflateStream::DeflateStream(int level) : state_(std::make_unique_for_overwrite<State>()) {
    if (deflateInit(&state_->stream, level) != Z_OK) throw std::bad_alloc();
}

DeflateStream::~DeflateStream() { deflateEnd(&state_->stream); }

void DeflateStream::Write(std::string_view bytes, const Sink& sink) {
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, std::numeric_limits<uInt>::max());
        Run(piece, false, sink);
        bytes.remove_prefix(piece.size());
    }
}

void DeflateStream::Finish(const Sink& sink) { Run({}, true, sink); }

void DeflateStream::Run(std::string_view bytes, bool finish, const Sink& sink) {
    z_stream& stream = state_->stream;
    auto& packed = state_->packed;
    // zlib does not write to its input; its interface says so only when it is compiled with ZLIB_CONST.
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    do {
        stream.next_out = reinterpret_cast<Bytef*>(packed.data());
        stream.avail_out = static_cast<uInt>(packed.size());
        deflate(&stream, finish ? Z_FINISH : Z_NO_FLUSH);
        const std::size_t made = packed.size() - stream.avail_out;
        if (made > 0) sink({packed.data(), made});
    } while (stream.avail_out == 0);
}

}  // namespace zavo::pdf
