#pragma once

#include "infrastructure/QueltInTraceClass.h"
#include "infrastructure/QueltInTraceSink.h"

#include <string>
#include <string_view>
#include <vector>

namespace quelt::test {

/// The lines that a piece of work writes, as an engineer reads them: entry and exit as "> method" and "<
/// method", error reports by their message, everything else as it stands.
class Captured {
public:
    explicit Captured(QueltInTraceCapture::Wanted wanted) : m_capture(wanted) {}

    [[nodiscard]] std::vector<std::string> texts() const {
        std::vector<std::string> texts;
        for (const QueltInTraceLine& line : m_capture.lines()) {
            if (line.level != 0) {
                texts.emplace_back(line.level == 1 ? "> " : "< ").append(line.methodName);
            } else if (!line.text.starts_with(QueltInTraceClass::GetError())) {
                texts.push_back(withoutIndentation(line.text));
            }
        }
        return texts;
    }
    [[nodiscard]] const std::vector<QueltInTraceLine>& lines() const { return m_capture.lines(); }

private:
    static std::string withoutIndentation(std::string_view text) {
        const std::string_view indentation = QueltInTraceClass::GetErrorIndent();
        return std::string(text.starts_with(indentation) ? text.substr(indentation.size()) : text);
    }
    QueltInTraceCapture m_capture;
};

/// Only what is written without any trace: errors and warnings.
class CapturedErrors : public Captured {
public:
    CapturedErrors() : Captured(QueltInTraceCapture::Wanted::unconditionalLines) {}
};

/// Everything.
class CapturedTrace : public Captured {
public:
    CapturedTrace() : Captured(QueltInTraceCapture::Wanted::everything) {}
};

} // namespace quelt::test
