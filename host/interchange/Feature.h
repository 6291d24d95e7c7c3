#pragma once

#include "dictionary/QueltEeVariable.h"
#include "interchange/JsonWriter.h"
#include "interchange/NameTable.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quelt::host {

/// What criteria need of a variable, made ready once.
class Feature {
public:
    /// `isFirstBearer`: its name alone says that it is meant, unless a dictionary holds it.
    Feature(const QueltEeVariable& variable, bool isFirstBearer);

    [[nodiscard]] const QueltEeVariable& variable() const noexcept { return m_variable; }
    /// The form of criteria on it: `option`, `selection`, `serial` or `treeSeries`.
    [[nodiscard]] Key form() const noexcept { return m_form; }
    /// The number of the value with this name, or null.
    [[nodiscard]] const std::uint32_t* findValue(std::string_view name) const { return m_values.find(name); }

    /// The beginning of a criterion on it, as it is written, up to the values: {"option":"Engine","in":[
    [[nodiscard]] std::string_view writtenBeginning() const noexcept { return m_writtenBeginning; }
    /// The name of the value `number` as it is written: "V6"
    [[nodiscard]] std::string_view writtenValue(std::uint32_t number) const noexcept {
        const std::size_t begin = m_writtenEnds[number];
        return std::string_view(m_writtenValues).substr(begin, m_writtenEnds[number + 1] - begin);
    }

private:
    void writeValues();

    const QueltEeVariable& m_variable;
    Key m_form;
    NameTable<std::uint32_t> m_values; // the names are the variable's
    std::string m_writtenBeginning;
    std::string m_writtenValues;            // one behind the other
    std::vector<std::size_t> m_writtenEnds; // where each ends, behind where the first begins
};

/// Writes which variable a criterion of this form is on: its key, and "of" where that is needed.
void writeVariable(JsonWriter& writer, Key form, const QueltEeVariable& variable, bool isFirstBearer);

} // namespace quelt::host
