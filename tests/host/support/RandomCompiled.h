#pragma once

#include "core/infrastructure/RandomNumbers.h"

#include <string>
#include <vector>

namespace quelt::host::test {

/// Effectivities spelt out, of every form that can be compiled: several domains, views and contexts, normal
/// forms of any shape, literals on changes and options, names that are hard to write down. They are written
/// as decompiling writes them: domains and views ascending, values sorted and each once.
class RandomCompiled {
public:
    explicit RandomCompiled(unsigned seed) : m_random(seed) {}

    /// What stands behind "compiled".
    [[nodiscard]] std::string next();

private:
    /// As many of what `make` makes as `most`, or fewer, between brackets.
    template <class Make>
    std::string array(unsigned most, Make make);
    /// Different numbers in ascending order, small ones and the greatest.
    std::vector<std::string> numbers(unsigned most);
    std::string view(const std::string& number);
    std::string context(unsigned number);
    std::string literal();
    std::string guid();

    RandomNumbers m_random;
};

} // namespace quelt::host::test
