#include "commands/RecordsCommand.h"

#include "commands/Summary.h"
#include "platform/Program.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ostream>
#include <thread>

namespace quelt::host {

namespace {

constexpr unsigned s_maxJobs = 256;

/// What is wrong with a number of threads; nothing when it can be used.
std::string checkJobs(const std::string& text) {
    unsigned jobs = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), jobs);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    return isNumber && jobs <= s_maxJobs
               ? std::string()
               : inQuotes(text) + " is not a whole number from 0 to " + std::to_string(s_maxJobs);
}

/// What `open` makes of `path`, or null for "-", which stands for the console's own stream.
template <class Open>
auto openUnlessOwn(const std::string& path, Open open, const char* failure) -> decltype(open(path)) {
    if (path == "-") {
        return nullptr;
    }
    try {
        return open(path);
    } catch (const StreamFailure& reason) {
        throw Unusable(failure + path + ": " + reason.what());
    }
}

} // namespace

bool isSameFile(const std::optional<FileIdentity>& left, const std::optional<FileIdentity>& right) {
    return left.has_value() && left == right;
}

void RecordsCommand::declareStreams(CLI::App& command) {
    command.add_option("records", m_recordsPath, "The records; standard input when left out or -")
        ->type_name("FILE");
    command
        .add_option("-o,--output", m_answersPath, "Where the answers go; standard output when left out or -")
        ->type_name("FILE");
}

void RecordsCommand::declareJobs(CLI::App& command) {
    command
        .add_option("-j,--jobs", m_jobs,
                    "How many threads convert; 0 for one a processor. Answers stay in order")
        ->check(checkJobs)
        ->default_val(1)
        ->type_name("N");
}

ExitStatus RecordsCommand::run(Console& console) {
    try {
        return answerRecords(console);
    } catch (const Unusable& reason) {
        writeMessage(console, reason.reason());
        return ExitStatus::unusable;
    }
}

void RecordsCommand::refuseOverwritingMore(const std::optional<FileIdentity>& /*answers*/) const {}

ExitStatus RecordsCommand::answerRecords(Console& console) {
    const auto openedRecords = openUnlessOwn(m_recordsPath, openSource, "cannot read the records ");
    ByteSource& records = openedRecords ? *openedRecords : console.input;
    // Writing answers over what is still being read would destroy it.
    const auto answersFile = m_answersPath == "-" ? console.output.file() : fileAt(m_answersPath);
    if (isSameFile(answersFile, records.file())) {
        throw Unusable("the answers would overwrite the records");
    }
    refuseOverwritingMore(answersFile);
    const MakeLineConverter makeConverter = prepare();
    const auto openedAnswers = openUnlessOwn(m_answersPath, openSink, "cannot write the answers ");
    ByteSink& answers = openedAnswers ? *openedAnswers : console.output;
    if (!openedRecords && console.inputIsTerminal) {
        writeMessage(console, std::string("reading records from the terminal, one JSON object a line; ") +
                                  endOfInputKeys() + " ends");
    }

    Progress progress(console, records.size());
    RunResult result = runConversion(makeConverter, workerCount(), records, answers, progress);
    const double seconds = progress.seconds();
    progress.clear();
    finish(answers, result);
    return report(console, result, seconds);
}

void RecordsCommand::finish(ByteSink& answers, RunResult& result) {
    try {
        answers.finish();
    } catch (const StreamFailure& failure) {
        if (!result.writeFailure) {
            result.writeFailure = failure;
        }
    }
}

ExitStatus RecordsCommand::report(Console& console, const RunResult& result, double seconds) {
    if (result.writeFailure) {
        // Whoever read the answers has enough of them, as in `| head`; that is nothing to speak of.
        if (result.writeFailure->code() != EPIPE) {
            writeMessage(console, std::string("cannot write the answers: ") + result.writeFailure->what());
        }
        return ExitStatus::partly;
    }
    if (result.readFailure) {
        writeMessage(console, std::string("cannot read the records: ") + result.readFailure->what());
        if (result.counts.records() == 0) {
            return ExitStatus::unusable;
        }
    }
    writeSummary(console.messages, result.counts, result.failures, seconds, console.hasColours);
    const bool isWhole = !result.readFailure && result.counts.converted == result.counts.records();
    return isWhole ? ExitStatus::success : ExitStatus::partly;
}

unsigned RecordsCommand::workerCount() const {
    return m_jobs != 0 ? m_jobs : std::clamp(std::thread::hardware_concurrency(), 1U, s_maxJobs);
}

} // namespace quelt::host
