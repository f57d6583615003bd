// Deflate, the compression of PDF streams: whole buffers, a stream in pieces, and the predictors that go with it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "engine/File.h"
#include "engine/PdfError.h"

namespace zavo::pdf {

// In zlib's format. `level` goes from 1 (fast) to 12 (small).
std::string Compress(std::string_view bytes, int level);

// Unpacks zlib's format; what follows the end of it is ignored. Throws PdfError where the bytes are damaged or cut off,
// and PdfTooLarge where they unpack to more than `limit` bytes.
std::string Inflate(std::string_view bytes, std::size_t limit);

// Undoes /Predictor 2 (of 8 bits a component) or 10 to 15; 1 changes nothing. A last row may be incomplete. Throws
// PdfError for any other predictor and for numbers that no predictor has.
std::string UndoPredictor(std::string_view bytes, int predictor, int colors, int bitsPerComponent, int columns);

// Whether deflating is worth while, judged by samples of the begin, the middle and the end.
bool LooksCompressible(std::string_view bytes);

// Compresses in pieces, in zlib's format, with the memory of one piece.
class DeflateStream {
public:
    explicit DeflateStream(int level);  // 1 to 9
    DeflateStream(const DeflateStream&) = delete;
    DeflateStream& operator=(const DeflateStream&) = delete;
    ~DeflateStream();

    void Write(std::string_view bytes, const Sink& sink);
    void Finish(const Sink& sink);  // once, after the last Write

private:
    struct State;
    void Run(std::string_view bytes, bool finish, const Sink& sink);

    std::unique_ptr<State> state_;
};

}  // namespace zavo::pdf
