#include "commands/AnswersFile.h"

#include "host/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using Begin = AnswersFile::Begin;

class AnswersFileTest : public testing::Test {
protected:
    [[nodiscard]] bool exists(const std::string& name) const {
        return std::filesystem::exists(folder.path(name));
    }

    test::TemporaryFolder folder;
    const std::string place = folder.path("answers");
};

TEST_F(AnswersFileTest, standsBesideItsPlaceUntilItIsComplete) {
    folder.write("answers", "old\n");
    {
        AnswersFile file(place, Begin::anew);
        file.write("1\n");
        EXPECT_EQ(folder.read("answers"), "old\n");
        EXPECT_EQ(folder.read("answers.part"), "1\n");
        file.write("2\n3\n");
        file.finish();
    }
    EXPECT_EQ(folder.read("answers"), "1\n2\n3\n");
    EXPECT_FALSE(exists("answers.part"));
}

TEST_F(AnswersFileTest, anEmptyOneIsAFileToo) {
    AnswersFile(place, Begin::anew).finish();
    EXPECT_TRUE(exists("answers"));
    EXPECT_EQ(folder.read("answers"), "");
}

TEST_F(AnswersFileTest, leavesWhatIsNotComplete) {
    AnswersFile(place, Begin::anew).write("1\n");
    EXPECT_FALSE(exists("answers"));
    EXPECT_EQ(folder.read("answers.part"), "1\n");
    { const AnswersFile nothing(place, Begin::anew); }
    EXPECT_FALSE(exists("answers.part"));
}

TEST_F(AnswersFileTest, goesOnBehindTheLastWholeLine) {
    const std::string longLine(200'000, 'x');
    struct Case {
        std::string part;
        std::string lines;
    };
    for (const Case& given :
         {Case{"", ""}, Case{"1", ""}, Case{"1\n", "1\n"}, Case{"1\n2\n3", "1\n2\n"}, Case{longLine, ""},
          Case{"1\n" + longLine, "1\n"}, Case{longLine + "\n" + longLine, longLine + "\n"}}) {
        folder.write("answers.part", given.part);
        {
            AnswersFile file(place, Begin::behind);
            EXPECT_EQ(readAll(*file.lines()), given.lines);
            EXPECT_EQ(file.hasLines(), !given.lines.empty());
        }
        EXPECT_EQ(folder.read("answers.part"), given.part) << "nothing was written";
        AnswersFile(place, Begin::behind).write("new\n");
        EXPECT_EQ(folder.read("answers.part"), given.lines + "new\n");
        folder.write("answers.part", given.part);
        AnswersFile(place, Begin::behind).finish();
        EXPECT_EQ(folder.read("answers"), given.lines);
    }
    EXPECT_THROW(AnswersFile(place, Begin::behind), StreamFailure) << "there is no part";
}

TEST_F(AnswersFileTest, belongsToOneRunAtATime) {
    AnswersFile file(place, Begin::anew);
    file.write("1\n");
    for (const Begin begin : {Begin::anew, Begin::behind}) {
        EXPECT_THROW(AnswersFile(place, begin), StreamFailure);
    }
    EXPECT_EQ(folder.read("answers.part"), "1\n");
    file.finish();
    EXPECT_EQ(folder.read("answers"), "1\n");
    AnswersFile(place, Begin::anew).write("2\n");
    EXPECT_EQ(folder.read("answers"), "1\n");
}

} // namespace
} // namespace quelt::host
