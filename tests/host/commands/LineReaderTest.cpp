#include "commands/LineReader.h"

#include "host/support/MemoryStreams.h"
#include "host/support/Samples.h"

#include <gmock/gmock.h>

namespace quelt::host {
namespace {

using test::repeated;
using test::TextSource;
using testing::ElementsAre;

std::string describe(const LineBatch& batch, const Line& line) {
    std::string text = std::to_string(line.number) + ":";
    text += line.isTooLong ? "TOO LONG" : batch.textOf(line).view();
    return text + (line.isUnfinished ? "..." : "");
}

/// All lines of `text`, read in pieces of `piece` bytes.
std::vector<std::string> linesOf(std::string_view text, std::size_t piece = 1000, std::size_t readSize = 16) {
    TextSource source(text, piece);
    LineReader reader(source, readSize);
    LineBatch batch;
    std::vector<std::string> lines;
    while (reader.fill(batch)) {
        for (const Line& line : batch.lines()) {
            lines.push_back(describe(batch, line));
        }
    }
    EXPECT_TRUE(batch.lines().empty());
    EXPECT_FALSE(reader.fill(batch)); // the end stays the end
    return lines;
}

TEST(LineReaderTest, cutsLines) {
    EXPECT_THAT(linesOf("a\nbc\nd\n"), ElementsAre("1:a", "2:bc", "3:d"));
    EXPECT_THAT(linesOf("a\nbc"), ElementsAre("1:a", "2:bc..."));
    EXPECT_THAT(linesOf(""), ElementsAre());
    EXPECT_THAT(linesOf("\n"), ElementsAre());
}

TEST(LineReaderTest, blankLinesCountAndAreSkipped) {
    EXPECT_THAT(linesOf("\n \t\na\n\r\n\nb\n  "), ElementsAre("3:a", "6:b"));
}

TEST(LineReaderTest, carriageReturnBelongsToTheLineEnd) {
    EXPECT_THAT(linesOf("a\r\n b \r\nc\r"), ElementsAre("1:a", "2: b ", "3:c\r..."));
}

TEST(LineReaderTest, byteOrderMarkInFrontIsSkipped) {
    EXPECT_THAT(linesOf("\xEF\xBB\xBF"
                        "a\n\xEF\xBB\xBF"
                        "b\n"),
                ElementsAre("1:a", "2:\xEF\xBB\xBF"
                                   "b"));
    EXPECT_THAT(linesOf("\xEF\xBB\xBF"), ElementsAre());
    EXPECT_THAT(linesOf("\xEF\xBB\xBF\r\n\nx"), ElementsAre("3:x..."));
    EXPECT_THAT(linesOf("\n\xEF\xBB\xBF"
                        "a"),
                ElementsAre("2:\xEF\xBB\xBF"
                            "a..."));
}

/// However the input comes in pieces, the lines are the same.
TEST(LineReaderTest, piecesDoNotMatter) {
    const std::string text =
        "\xEF\xBB\xBF{\"id\":1}\r\n\r\n" + repeated("x", 100) + "\n\n" + repeated("yz\n", 20) + "end";
    const std::vector<std::string> whole = linesOf(text, 1000, 1000);
    EXPECT_EQ(whole.size(), 23U);
    EXPECT_EQ(whole[1], "3:" + repeated("x", 100));
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 16U, 64U}) {
        for (const std::size_t readSize : {1U, 5U, 16U, 200U}) {
            EXPECT_EQ(linesOf(text, piece, readSize), whole) << piece << " " << readSize;
        }
    }
}

TEST(LineReaderTest, batchesAreSmallWhereLinesAre) {
    const std::string text = repeated("0123456789\n", 1000);
    TextSource source(text);
    LineReader reader(source, 110);
    LineBatch batch;
    std::size_t lines = 0;
    while (reader.fill(batch)) {
        EXPECT_LE(batch.lines().size(), 11U);
        lines += batch.lines().size();
        EXPECT_EQ(batch.endOfInput(), lines * 11);
    }
    EXPECT_EQ(lines, 1000U);
}

TEST(LineReaderTest, linesUpToTheLimitAreRead) {
    const std::string atLimit(s_maxLineSize, 'x');
    const std::string text =
        "a\n" + atLimit + "\r\nb\n" + atLimit + "x\nc\n" + atLimit + "xx\r\nd\n" + atLimit + "x";
    TextSource source(text);
    LineReader reader(source, std::size_t{1} << 20U);
    LineBatch batch;
    std::vector<std::string> lines;
    while (reader.fill(batch)) {
        for (const Line& line : batch.lines()) {
            lines.push_back(line.size < 10 ? describe(batch, line) : std::to_string(line.number) + ":long");
        }
    }
    EXPECT_THAT(lines, ElementsAre("1:a", "2:long", "3:b", "4:TOO LONG", "5:c", "6:TOO LONG", "7:d",
                                   "8:TOO LONG..."));
}

/// A text without line ends that is made up while it is read.
class EndlessSource : public ByteSource {
public:
    explicit EndlessSource(std::uint64_t size) : m_left(size) {}
    std::size_t read(char* data, std::size_t size) override {
        const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(size, m_left));
        std::fill_n(data, count, 'x');
        m_left -= count;
        return count;
    }

private:
    std::uint64_t m_left;
};

TEST(LineReaderTest, restOfALongLineIsNotKept) {
    EndlessSource source(std::uint64_t{1} << 30U);
    LineReader reader(source, std::size_t{1} << 20U);
    LineBatch batch;
    ASSERT_TRUE(reader.fill(batch));
    ASSERT_EQ(batch.lines().size(), 1U);
    EXPECT_TRUE(batch.lines()[0].isTooLong);
    EXPECT_EQ(batch.lines()[0].size, 0U);
    EXPECT_FALSE(reader.fill(batch));
}

TEST(LineReaderTest, failureEndsTheInput) {
    TextSource source("a\nb\nc", 2, EIO);
    LineReader reader(source, 16);
    LineBatch batch;
    ASSERT_TRUE(reader.fill(batch));
    ASSERT_TRUE(reader.fill(batch));
    EXPECT_EQ(describe(batch, batch.lines()[0]), "2:b");
    EXPECT_THROW((void)reader.fill(batch), StreamFailure);
}

TEST(LineReaderTest, textIsPaddedForTheParser) {
    TextSource source("[1]");
    LineReader reader(source, 16);
    LineBatch batch;
    ASSERT_TRUE(reader.fill(batch));
    const PaddedText text = batch.textOf(batch.lines()[0]);
    for (std::size_t index = 0; index < simdjson::SIMDJSON_PADDING; ++index) {
        EXPECT_EQ(text.data[text.size + index], '\0');
    }
}

TEST(LineReaderTest, linesThatAreGivenBackComeAgain) {
    const std::string text = "a\n\nb\nc\nd";
    for (const std::size_t taken : {0U, 1U, 2U, 3U}) {
        TextSource source(text, 8); // the first three lines, and then the last
        LineReader reader(source, 16);
        LineBatch batch;
        ASSERT_TRUE(reader.fill(batch));
        ASSERT_EQ(batch.lines().size(), 3U);
        reader.giveBack(batch, taken);
        std::vector<std::string> lines;
        while (reader.fill(batch)) {
            for (const Line& line : batch.lines()) {
                lines.push_back(describe(batch, line));
            }
        }
        const std::vector<std::string> all{"1:a", "3:b", "4:c", "5:d..."};
        EXPECT_EQ(lines,
                  std::vector<std::string>(all.begin() + static_cast<std::ptrdiff_t>(taken), all.end()));
    }
}

} // namespace
} // namespace quelt::host
