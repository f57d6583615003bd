// Deflate: both ways, limits, damage, predictors, compression in pieces.
#include "engine/Deflate.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>

namespace zavo::pdf {
namespace {

std::string RandomBytes(std::size_t size) {
    std::mt19937 random(1);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    return bytes;
}

std::string TextBytes(std::size_t size) {
    std::string text;
    for (int line = 0; text.size() < size; ++line) text += std::to_string(line) + " 0 obj <</Type/Page>> endobj\n";
    text.resize(size);
    return text;
}

std::string CompressInPieces(std::string_view bytes, int level, std::size_t piece) {
    std::string packed;
    const Sink sink = [&](std::string_view part) { packed += part; };
    DeflateStream stream(level);
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
        stream.Write(bytes.substr(0, piece), sink);
    stream.Finish(sink);
    return packed;
}

TEST(Deflate, WhatWasCompressedInflatesToTheSame) {
    for (const std::size_t size : {0, 1, 1000, 100000, 5000000}) {
        for (const int level : {1, 6, 12}) {
            EXPECT_TRUE(Inflate(Compress(TextBytes(size), level), size) == TextBytes(size)) << size << ' ' << level;
            EXPECT_TRUE(Inflate(Compress(RandomBytes(size), level), size) == RandomBytes(size)) << size << ' ' << level;
        }
    }
}

TEST(Deflate, ZerosInflateFarBeyondTheFirstGuess) {
    const std::string zeros(20000000, '\0');
    EXPECT_TRUE(Inflate(Compress(zeros, 6), zeros.size() * 2) == zeros);
}

TEST(Deflate, MoreThanTheLimitIsRefused) {
    const std::string packed = Compress(TextBytes(100000), 6);
    EXPECT_EQ(Inflate(packed, 100000).size(), 100000U);
    EXPECT_THROW(Inflate(packed, 99999), PdfError);
    EXPECT_THROW(Inflate(packed, 1), PdfError);
    EXPECT_THROW(Inflate(packed, 0), PdfError);
    EXPECT_EQ(Inflate(Compress("", 6), 0), "");
}

TEST(Deflate, WhatFollowsTheEndIsIgnored) {
    EXPECT_EQ(Inflate(Compress("content", 6) + "\r\nendstream", 100), "content");
}

TEST(Deflate, DamagedAndTruncatedBytesAreRefused) {
    const std::string packed = Compress(TextBytes(1000), 6);
    for (std::size_t size = 0; size < packed.size(); ++size) {
        EXPECT_THROW(Inflate(packed.substr(0, size), 100000), PdfError) << size;
    }
    std::string badChecksum = packed;
    badChecksum.back() = static_cast<char>(badChecksum.back() ^ 1);
    EXPECT_THROW(Inflate(badChecksum, 100000), PdfError);
    EXPECT_THROW(Inflate("no zlib format at all", 100000), PdfError);
}

TEST(Deflate, PngRowsOfEveryFilterComeBack) {
    // Two colours of 8 bits and three columns; every row says 1 2 3 4 5 6 in another way.
    const std::string row("\1\2\3\4\5\6", 6);
    const std::string filtered(
        "\0\1\2\3\4\5\6"   // none
        "\1\1\2\2\2\2\2"   // less the left pixel
        "\2\0\0\0\0\0\0"   // less the pixel above
        "\3\1\1\1\1\1\1"   // less the mean of both: 1-0 2-1 3-2 4-3 5-4 6-5
        "\4\0\0\0\0\0\0",  // less the better of both
        35);
    EXPECT_EQ(UndoPredictor(filtered, 12, 2, 8, 3), row + row + row + row + row);
    EXPECT_EQ(UndoPredictor(filtered, 15, 2, 8, 3), row + row + row + row + row);
}

TEST(Deflate, TheFirstPngRowHasZerosAbove) {
    const std::string up("\2\1\2\3", 4);
    const std::string mean("\3\2\1\2", 4);   // 2, 1+2/2, 2+2/2
    const std::string paeth("\4\1\1\1", 4);  // 1, 1+1, 1+2
    EXPECT_EQ(UndoPredictor(up, 10, 1, 8, 3), "\1\2\3");
    EXPECT_EQ(UndoPredictor(mean, 10, 1, 8, 3), "\2\2\3");
    EXPECT_EQ(UndoPredictor(paeth, 10, 1, 8, 3), "\1\2\3");
}

TEST(Deflate, PaethTakesTheNearestNeighbour) {
    const std::string rows(
        "\0\12\24"  // above: 10 20
        "\4\1\1",   // 10+1 (above), then of left 11, above 20, above left 10: above is nearest to 21
        6);
    EXPECT_EQ(UndoPredictor(rows, 14, 1, 8, 2), std::string("\12\24\13\25", 4));
}

TEST(Deflate, RowsOfFewBitsCountInBytes) {
    EXPECT_EQ(UndoPredictor(std::string("\0\1\2\2\1\1", 6), 12, 1, 1, 9), std::string("\1\2\2\3", 4));
}

TEST(Deflate, AnIncompleteLastRowIsDecodedAsFarAsItGoes) {
    EXPECT_EQ(UndoPredictor(std::string("\0\1\2\3\2\1", 6), 12, 1, 8, 3), std::string("\1\2\3\2", 4));
    EXPECT_EQ(UndoPredictor(std::string("\0\1\2\3\2", 5), 12, 1, 8, 3), "\1\2\3");
    EXPECT_EQ(UndoPredictor("", 12, 1, 8, 3), "");
}

TEST(Deflate, TiffRowsAddTheLeftPixel) {
    const std::string differences("\1\2\1\1\1\1\5\5\1\1", 10);
    EXPECT_EQ(UndoPredictor(differences, 2, 2, 8, 3), std::string("\1\2\2\3\3\4\5\5\6\6", 10));
    EXPECT_THROW(UndoPredictor(differences, 2, 2, 16, 3), PdfError);
}

TEST(Deflate, NoPredictorChangesNothing) { EXPECT_EQ(UndoPredictor("as it is", 1, -1, -1, -1), "as it is"); }

TEST(Deflate, NonsensePredictorsAreRefused) {
    struct Case {
        int predictor, colors, bits, columns;
    };
    for (const Case& c : {Case{0, 1, 8, 1},
                          {3, 1, 8, 1},
                          {9, 1, 8, 1},
                          {16, 1, 8, 1},
                          {-1, 1, 8, 1},
                          {12, 0, 8, 1},
                          {12, -1, 8, 1},
                          {12, INT_MAX, 8, 1},
                          {12, 1, 0, 1},
                          {12, 1, 7, 1},
                          {12, 1, 32, 1},
                          {12, 1, 8, 0},
                          {12, 1, 8, -1},
                          {2, 1, 8, INT_MIN}}) {
        EXPECT_THROW(UndoPredictor(std::string(10, '\0'), c.predictor, c.colors, c.bits, c.columns), PdfError)
            << c.predictor << ' ' << c.colors << ' ' << c.bits << ' ' << c.columns;
    }
    EXPECT_THROW(UndoPredictor(std::string("\5\1\2\3", 4), 12, 1, 8, 3), PdfError);
    // The widest rows that numbers can name: there is not even one whole.
    EXPECT_EQ(UndoPredictor(std::string("\2\1\2\3", 4), 12, 256, 16, INT_MAX), "\1\2\3");
}

TEST(Deflate, PiecesOfAnySizeMakeOneStream) {
    const std::string bytes = TextBytes(500000) + RandomBytes(500000);
    for (const std::size_t piece : {1UL << 12, 65536UL, 1000000UL}) {
        EXPECT_TRUE(Inflate(CompressInPieces(bytes, 6, piece), bytes.size()) == bytes) << piece;
    }
    EXPECT_EQ(Inflate(CompressInPieces("", 6, 1), 0), "");
    EXPECT_LT(CompressInPieces(TextBytes(100000), 9, 1000).size(), CompressInPieces(TextBytes(100000), 1, 1000).size());
}

TEST(Deflate, ASinkThatThrowsEndsTheStream) {
    DeflateStream stream(1);
    const Sink full = [](std::string_view) { throw FileError("full"); };
    EXPECT_THROW(stream.Write(RandomBytes(1000000), full), FileError);
}

TEST(Deflate, OnlyWhatShrinksLooksCompressible) {
    EXPECT_TRUE(LooksCompressible(TextBytes(100)));
    EXPECT_TRUE(LooksCompressible(TextBytes(10000000)));
    EXPECT_FALSE(LooksCompressible(RandomBytes(100)));
    EXPECT_FALSE(LooksCompressible(RandomBytes(10000000)));
    EXPECT_FALSE(LooksCompressible(""));
    // A text before a long picture; the samples see both ends.
    EXPECT_TRUE(LooksCompressible(TextBytes(100000) + RandomBytes(1000000)));
    EXPECT_TRUE(LooksCompressible(RandomBytes(1000000) + TextBytes(100000)));
}

}  // namespace
}  // namespace zavo::pdf
