#include "interchange/ReportedLines.h"

#include <gmock/gmock.h>

namespace quelt::host {
namespace {

using testing::ElementsAre;

QueltInTraceLine line(std::string_view text, int level = 0, std::string_view domain = "QueltDataMigration") {
    QueltInTraceLine result;
    result.className = "Class";
    result.domainName = domain;
    result.level = level;
    result.text = text;
    return result;
}

/// The lines as reported, with a letter for the kind.
std::vector<std::string> reported(const std::vector<QueltInTraceLine>& lines) {
    std::vector<std::string> result;
    eachReportedLine(lines, [&](const ReportedLine& one) {
        const char* const kind =
            one.kind == LineKind::error ? "E:" : (one.kind == LineKind::warning ? "W:" : "-:");
        result.push_back(kind + std::string(one.text));
        return true;
    });
    return result;
}

TEST(ReportedLinesTest, errorReportsAreTheirMessages) {
    EXPECT_THAT(reported({line("[ERROR] src/A.cpp(12)"), line("        ERROR : unexpected")}),
                ElementsAre("E:ERROR : unexpected"));
    // Whatever the message begins with.
    EXPECT_THAT(reported({line("[ERROR] src/A.cpp(12)"), line("        Wow")}), ElementsAre("E:Wow"));
}

TEST(ReportedLinesTest, plainLinesGoByTheirBeginning) {
    EXPECT_THAT(
        reported({line("ERROR : plain"), line("WARNING : mind"), line("There is an ERROR"), line("ERR")}),
        ElementsAre("E:ERROR : plain", "W:WARNING : mind", "-:There is an ERROR", "-:ERR"));
}

TEST(ReportedLinesTest, indentationCountsOnlyBehindALocation) {
    EXPECT_THAT(reported({line("        ERROR : indented")}), ElementsAre("-:        ERROR : indented"));
    EXPECT_THAT(reported({line("[ERROR] src/A.cpp(12)"), line("", 2), line("        late")}),
                ElementsAre("-:", "-:        late"));
}

TEST(ReportedLinesTest, otherDomainsAreLeftOut) {
    EXPECT_THAT(reported({line("ERROR : core", 0, "QueltCore"), line("", 1), line("", 2)}),
                ElementsAre("-:", "-:"));
}

TEST(ReportedLinesTest, visitEndsTheWalk) {
    const std::vector<QueltInTraceLine> lines{line("one"), line("two"), line("three")};
    int visits = 0;
    eachReportedLine(lines, [&](const ReportedLine&) { return ++visits < 2; });
    EXPECT_EQ(visits, 2);
}

} // namespace
} // namespace quelt::host
