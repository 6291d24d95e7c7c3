#pragma once

#include "commands/AnswersFile.h"
#include "commands/Command.h"
#include "commands/ConversionRun.h"
#include "commands/KeptAnswers.h"
#include "commands/Unusable.h"

#include <memory>
#include <optional>
#include <string>

namespace quelt::host {

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
    class Answers;

    [[nodiscard]] ExitStatus answerRecords(Console& console);
    void refuseOverwriting(const Console& console, const ByteSource& records,
                           const std::optional<std::string>& place) const;
    [[nodiscard]] Answers openAnswers(Console& console, const std::optional<std::string>& place) const;
    [[nodiscard]] static KeptAnswers keepAnswers(Console& console, const Answers& answers,
                                                 LineReader& records, const MakeLineConverter& makeConverter,
                                                 Progress& progress);
    [[nodiscard]] static ExitStatus report(Console& console, const Answers& answers, const RunResult& result,
                                           const KeptAnswers& kept, double seconds);
    [[nodiscard]] unsigned workerCount() const;

    std::string m_recordsPath = "-";
    std::string m_answersPath = "-";
    bool m_resumes = false;
    unsigned m_jobs = 1;
};

/// True when both are files, and the same one.
[[nodiscard]] bool isSameFile(const std::optional<FileIdentity>& left,
                              const std::optional<FileIdentity>& right);

} // namespace quelt::host
