#pragma once

#include "commands/Command.h"
#include "commands/ConversionRun.h"

#include <memory>
#include <string>

namespace quelt::host {

/// `convert`: converts records, one JSON object a line, and answers each with one line.
class ConvertCommand : public Command {
public:
    CLI::App& declare(CLI::App& application) override;
    ExitStatus run(Console& console) override;

private:
    [[nodiscard]] ExitStatus convert(Console& console) const;
    static void finish(ByteSink& answers, RunResult& result);
    [[nodiscard]] static ExitStatus report(Console& console, const RunResult& result, double seconds);
    [[nodiscard]] unsigned workerCount() const;

    std::string m_contextPath;
    std::string m_recordsPath = "-";
    std::string m_answersPath = "-";
    bool m_branch = false;
    AnswerOptions m_options;
    unsigned m_jobs = 1;
};

} // namespace quelt::host
