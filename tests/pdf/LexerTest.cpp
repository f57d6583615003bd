// PDF syntax: tokens, values, dictionaries, texts.
#include "engine/Lexer.h"

#include <gtest/gtest.h>

#include "engine/PdfError.h"

namespace zavo::pdf {
namespace {

using std::string_view_literals::operator""sv;

std::string_view Value(std::string_view text) {
    Lexer lexer(text);
    return TakeValue(lexer);
}

TEST(Lexer, TellsKindsOfTokensApart) {
    const struct {
        const char* text;
        TokenKind kind;
        const char* token;
    } cases[] = {
        {" 12 ", TokenKind::Integer, "12"},
        {"-7/", TokenKind::Integer, "-7"},
        {"+0", TokenKind::Integer, "+0"},
        {"1.5", TokenKind::Real, "1.5"},
        {"-.5", TokenKind::Real, "-.5"},
        {"4.", TokenKind::Real, "4."},
        {"1.2.3", TokenKind::Keyword, "1.2.3"},
        {"-", TokenKind::Keyword, "-"},
        {"/Name#20x(", TokenKind::Name, "/Name#20x"},
        {"/ x", TokenKind::Name, "/"},
        {"(a(b)\\)c)d", TokenKind::String, "(a(b)\\)c)"},
        {"<0aF>", TokenKind::HexString, "<0aF>"},
        {"<<", TokenKind::DictOpen, "<<"},
        {">>", TokenKind::DictClose, ">>"},
        {"[", TokenKind::ArrayOpen, "["},
        {"]", TokenKind::ArrayClose, "]"},
        {"%comment\rtrue", TokenKind::Keyword, "true"},
        {"", TokenKind::End, ""},
        {"% only a comment", TokenKind::End, ""},
        {"(no end", TokenKind::Bad, "(no end"},
        {"<0a", TokenKind::Bad, "<0a"},
        {")", TokenKind::Bad, ")"},
        {"> ", TokenKind::Bad, ">"},
        {"(ends in \\", TokenKind::Bad, "(ends in \\"},
    };
    for (const auto& c : cases) {
        Lexer lexer(c.text);
        const Token token = lexer.Next();
        EXPECT_EQ(token.kind, c.kind) << c.text;
        EXPECT_EQ(token.text, c.token) << c.text;
    }
}

TEST(Lexer, TakesWholeValues) {
    const struct {
        const char* text;
        const char* value;
    } cases[] = {
        {"12 0 R/Next", "12 0 R"},
        {"12 0 Rx", "12"},
        {"12 13 14", "12"},
        {"12 0", "12"},
        {"[1 2[3]<</A[4]>>] 5", "[1 2[3]<</A[4]>>]"},
        {"<</A<</B(>>)>>>> x", "<</A<</B(>>)>>>>"},
        {"(text) 1", "(text)"},
        {"null endobj", "null"},
        {"/Name/Other", "/Name"},
    };
    for (const auto& c : cases) EXPECT_EQ(Value(c.text), c.value) << c.text;
}

TEST(Lexer, ValueThatIsMissingOrDoesNotEndThrows) {
    for (const char* const text :
         {"", "]", ">>", "R", "endobj", "[1 2", "<</A 1", "[1 endobj 2]", "<</A stream>>", "(x"}) {
        EXPECT_THROW(Value(text), PdfError) << text;
    }
}

TEST(Lexer, NestingOfAnyDepthCostsNoStack) {
    const std::string deep = std::string(1000000, '[') + std::string(1000000, ']');
    EXPECT_EQ(Value(deep).size(), deep.size());
    EXPECT_THROW(Value(std::string(1000000, '[')), PdfError);
}

TEST(Lexer, ReferenceIsNumberGenerationAndR) {
    EXPECT_EQ(ParseReference("12 3 R")->number, 12u);
    EXPECT_EQ(ParseReference("12 3 R")->generation, 3u);
    EXPECT_EQ(ParseReference("12\n 3%x\nR")->number, 12u);
    for (const char* const text :
         {"12", "12 0", "12 0 R x", "-1 0 R", "99999999999 0 R", "1 99999 R", "(1 0 R)", "R", ""}) {
        EXPECT_FALSE(ParseReference(text)) << text;
    }
}

TEST(Lexer, IntegersThatDoNotFitAreNone) {
    EXPECT_EQ(ParseInteger("-12"), -12);
    EXPECT_EQ(ParseInteger("+12"), 12);
    for (const char* const text : {"", "1.0", "99999999999999999999", "1x", " 1", "+-1"}) {
        EXPECT_FALSE(ParseInteger(text)) << text;
    }
}

TEST(Dict, HasTheTopLevelInOrderAndTheFirstOfEqualKeys) {
    const Dict dict("<</A 1/B<</A 2>>/A 3/C 4 0 R>>"sv);
    ASSERT_EQ(dict.Entries().size(), 4u);
    EXPECT_EQ(dict.Find("A"), "1");
    EXPECT_EQ(dict.Find("B"), "<</A 2>>");
    EXPECT_EQ(dict.Find("C"), "4 0 R");
    EXPECT_EQ(dict.Find("D"), "");
    EXPECT_FALSE(dict.Has("D"));
}

TEST(Dict, KeysMayBeEscaped) {
    EXPECT_EQ(Dict("<</Pa#67es 1>>"sv).Find("Pages"), "1");
    EXPECT_TRUE(IsName("/#41", "A"));
    EXPECT_FALSE(IsName("/#41B", "A"));
    EXPECT_FALSE(IsName("A", "A"));
    EXPECT_EQ(DecodeName("/a#20b#zz"), "a b#zz");
    EXPECT_EQ(EncodeName("a b/c#"), "/a#20b#2Fc#23");
    EXPECT_EQ(DecodeName(EncodeName("\xC3\xA4 (x)")), "\xC3\xA4 (x)");
}

TEST(Dict, OtherValueIsEmptyAndDamagedThrows) {
    EXPECT_FALSE(Dict("[/A 1]"sv).Has("A"));
    EXPECT_TRUE(ArrayItems("<</A 1>>").empty());
    for (const char* const text : {"<</A>>", "<<1 2>>", "<</A 1", "<</A 1]"})
        EXPECT_THROW(Dict{std::string_view(text)}, PdfError) << text;
    EXPECT_THROW(ArrayItems("[1 2"), PdfError);
    EXPECT_EQ(ArrayItems("[1 0 R(x)[]]").size(), 3u);
}

TEST(PdfString, EscapesAndHexadecimalFormsDecode) {
    const struct {
        const char* token;
        const char* bytes;
    } cases[] = {
        {"(a\\(b\\)\\\\)", "a(b)\\"},
        {"(\\n\\r\\t\\b\\f)", "\n\r\t\b\f"},
        {"(\\101\\7x\\1234)", "A\7xS4"},
        {"(a\\\nb\\\r\nc)", "abc"},
        {"(a\r\nb\rc)", "a\nb\nc"},
        {"(\\q)", "q"},
        {"<41 4>", "A@"},
        {"<4g1>", "A"},
        {"/Name", ""},
        {"<</A 1>>", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(DecodeString(c.token), c.bytes) << c.token;
}

TEST(PdfString, EveryByteSurvivesEncoding) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    all += "\r\n(((\\";
    EXPECT_EQ(DecodeString(EncodeString(all)), all);
    EXPECT_EQ(Value(EncodeString(all)), EncodeString(all));
}

TEST(PdfText, KnowsItsThreeEncodings) {
    EXPECT_EQ(TextToUtf8("plain"), "plain");
    EXPECT_EQ(TextToUtf8("\xE4\x80\xA0"), "\xC3\xA4\xE2\x80\xA2\xE2\x82\xAC");
    EXPECT_EQ(TextToUtf8(std::string_view("\xFE\xFF\x00\xE4\xD8\x3D\xDE\x00", 8)), "\xC3\xA4\xF0\x9F\x98\x80");
    EXPECT_EQ(TextToUtf8(std::string_view("\xFF\xFE\xE4\x00", 4)), "\xC3\xA4");
    EXPECT_EQ(TextToUtf8("\xEF\xBB\xBF\xC3\xA4\xFF"), "\xC3\xA4\xEF\xBF\xBD");
    EXPECT_EQ(TextToUtf8(std::string_view("\xFE\xFF\xD8\x3D", 4)), "\xEF\xBF\xBD");  // half a pair
}

TEST(PdfText, TextSurvivesBothWays) {
    EXPECT_EQ(Utf8ToText("plain (x)"), "plain (x)");
    for (const char* const text :
         {"", "abc", "\xC3\xA4", "\xE6\x97\xA5\xE6\x9C\xAC", "\xF0\x9F\x98\x80", "tab\tline\n"}) {
        EXPECT_EQ(TextToUtf8(Utf8ToText(text)), text);
    }
}

}  // namespace
}  // namespace zavo::pdf
