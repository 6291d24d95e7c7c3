#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace quelt::host::test {

/// One conversion and what must come of it, in the setting of the environment that is current.
struct Case {
    std::string file;
    std::string name;
    std::string why;
    /// Made of file and name, of letters, digits and underscores; unique.
    std::string testName;
    /// The texts of the context file and of the record's line.
    std::string context;
    std::string record;
    /// The expected answers with trace and without.
    std::string expected;
    std::string untraced;
    /// What is wrong with the case itself; empty for a good one.
    std::string problem;
};

/// For messages of the test framework.
std::ostream& operator<<(std::ostream& out, const Case& one);

/// The names that cases use for a setting of the module's two switches: "plain", "migRen", "optimization",
/// "both".
[[nodiscard]] std::string_view currentSetting();

/// The cases of all files in `folder`, in the order of their names. A file, or a case, that cannot be used
/// gives a case with a problem.
[[nodiscard]] std::vector<Case> loadCases(const std::string& folder);

/// The cases of one file with the text `text`.
[[nodiscard]] std::vector<Case> readCases(const std::string& file, const std::string& text,
                                          std::string_view setting);

} // namespace quelt::host::test
