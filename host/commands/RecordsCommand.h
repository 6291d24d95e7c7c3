#pragma once

#include "commands/Command.h"
#include "commands/ConversionRun.h"
#include "interchange/Place.h"

#include <string>

namespace quelt::host {

/// Says why a command cannot do its work, on one line.
class Unusable : public Refusal {
public:
    using Refusal::Refusal;
};

/// What the commands share that read records, one JSON object a line, and answer each with one line: the
/// options for input, output and threads, the run, and its summary.
class RecordsCommand : public Command {
public:
    ExitStatus run(Console& console) final;

protected:
    // For declare(), in the order in which the help shall name the options.
    void declareStreams(CLI::App& command);
    void declareJobs(CLI::App& command);

    /// Whether `answers`, the file that is going to be emptied and written, is one that the command reads
    /// beside the records. Throws Unusable then.
    virtual void refuseOverwritingMore(const std::optional<FileIdentity>& answers) const;
    /// Reads what the command needs beside the records; throws Unusable. Nothing was written before.
    [[nodiscard]] virtual MakeLineConverter prepare() = 0;

private:
    [[nodiscard]] ExitStatus answerRecords(Console& console);
    static void finish(ByteSink& answers, RunResult& result);
    [[nodiscard]] static ExitStatus report(Console& console, const RunResult& result, double seconds);
    [[nodiscard]] unsigned workerCount() const;

    std::string m_recordsPath = "-";
    std::string m_answersPath = "-";
    unsigned m_jobs = 1;
};

/// True when both are files, and the same one.
[[nodiscard]] bool isSameFile(const std::optional<FileIdentity>& left,
                              const std::optional<FileIdentity>& right);

} // namespace quelt::host
