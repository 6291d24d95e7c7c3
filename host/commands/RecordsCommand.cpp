#include "commands/RecordsCommand.h"

#include "commands/Summary.h"
#include "platform/Interruption.h"
#include "platform/Program.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <ostream>
#include <thread>
#include <utility>

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

/// What `open` makes of `path`. Throws Unusable.
template <class Open>
auto openOrRefuse(const std::string& path, Open open, const char* failure) -> decltype(open(path)) {
    try {
        return open(path);
    } catch (const StreamFailure& reason) {
        throw Unusable(failure + path + ": " + reason.what());
    }
}

/// The same, or null for "-", which stands for the console's own stream.
template <class Open>
auto openUnlessOwn(const std::string& path, Open open, const char* failure) -> decltype(open(path)) {
    return path == "-" ? nullptr : openOrRefuse(path, open, failure);
}

constexpr const char* s_cannotRead = "cannot read the records ";
constexpr const char* s_cannotWrite = "cannot write the answers ";

/// Stands for a file of answers that is complete.
class CompleteAnswers : public ByteSink {
public:
    explicit CompleteAnswers(std::string path) : m_path(std::move(path)) {}
    void write(std::string_view bytes) override {
        if (!bytes.empty()) {
            throw Unusable("cannot go on with " + m_path +
                           ": it has been complete, and there are more records now; renamed to " +
                           AnswersFile::partOf(m_path) + ", it is gone on with");
        }
    }

private:
    std::string m_path;
};

/// Whether an interruption explains that `failure` ended the writing: nobody took the answers any more.
bool isExpected(const StreamFailure& failure) {
    return failure.code() == EINTR || failure.code() == EPIPE;
}

ExitStatus statusOfInterruption() {
    return interruption() == SIGTERM ? ExitStatus::terminated : ExitStatus::interrupted;
}

std::string inWords(std::uint64_t count, const std::string& what) {
    return formatCount(count) + " " + what + (count == 1 ? "" : "s");
}

} // namespace

/// Where the answers of a run go, and what is there already.
class RecordsCommand::Answers {
public:
    /// To a stream.
    explicit Answers(ByteSink& sink) : m_sink(sink) {}
    explicit Answers(std::unique_ptr<ByteSink> sink) : m_owned(std::move(sink)), m_sink(*m_owned) {}
    /// Into a file; a part that is there is gone on with when it `isKept`.
    Answers(std::unique_ptr<AnswersFile> file, const std::string& place, bool isKept)
        : m_owned(std::move(file)), m_sink(*m_owned), m_file(static_cast<AnswersFile*>(m_owned.get())),
          m_path(AnswersFile::partOf(place)), m_kept(isKept ? m_file->lines() : nullptr) {}
    /// In the file at `place`, which is complete.
    Answers(std::unique_ptr<ByteSource> complete, const std::string& place)
        : m_owned(std::make_unique<CompleteAnswers>(place)), m_sink(*m_owned), m_path(place),
          m_kept(std::move(complete)) {}

    [[nodiscard]] ByteSink& sink() const noexcept { return m_sink; }
    /// The answers that an earlier run has left; null when there was none.
    [[nodiscard]] ByteSource* kept() const noexcept { return m_kept.get(); }
    /// The file that answers are in now.
    [[nodiscard]] const std::string& path() const noexcept { return m_path; }
    [[nodiscard]] bool wereComplete() const noexcept { return m_kept && m_file == nullptr; }
    /// What a run that did not come to its end says of its answers.
    [[nodiscard]] std::string whereTheyAre() const {
        return m_file != nullptr && m_file->hasLines()
                   ? "; what is answered is in " + m_path + ", and --resume goes on behind it"
                   : std::string();
    }

private:
    std::unique_ptr<ByteSink> m_owned;
    ByteSink& m_sink;
    AnswersFile* m_file = nullptr;
    std::string m_path;
    std::unique_ptr<ByteSource> m_kept;
};

bool isSameFile(const std::optional<FileIdentity>& left, const std::optional<FileIdentity>& right) {
    return left.has_value() && left == right;
}

void RecordsCommand::declareStreams(CLI::App& command) {
    command.add_option("records", m_recordsPath, "The records; standard input when left out or -")
        ->type_name("FILE");
    command
        .add_option(
            "-o,--output", m_answersPath,
            "Where the answers go; standard output when left out or -. A file is written as FILE.part "
            "and renamed when it is complete")
        ->type_name("FILE");
    command.add_flag("--resume", m_resumes,
                     "Go on behind the answers in FILE.part that a run with the same records and options has "
                     "left; from the first record when there are none");
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
        if (interruption() != 0) { // whatever could not be done then
            writeMessage(console, "interrupted before the first record was converted");
            return statusOfInterruption();
        }
        writeMessage(console, reason.reason());
        return ExitStatus::unusable;
    }
}

void RecordsCommand::refuseOverwritingMore(const std::optional<FileIdentity>& /*answers*/) const {}

ExitStatus RecordsCommand::answerRecords(Console& console) {
    const auto openedRecords = openUnlessOwn(m_recordsPath, openSource, s_cannotRead);
    ByteSource& records = openedRecords ? *openedRecords : console.input;
    const std::optional<std::string> place =
        m_answersPath == "-" ? std::nullopt : openOrRefuse(m_answersPath, placeOfFile, s_cannotWrite);
    if (m_resumes && !place) {
        throw Unusable("--resume needs --output with the name of a file");
    }
    refuseOverwriting(console, records, place);
    const MakeLineConverter makeConverter = prepare();
    const Answers answers = openAnswers(console, place);
    if (!openedRecords && console.inputIsTerminal) {
        writeMessage(console, std::string("reading records from the terminal, one JSON object a line; ") +
                                  endOfInputKeys() + " ends");
    }

    Progress progress(console, records.size());
    LineReader reader(records, readSizeFor(workerCount()));
    const KeptAnswers kept = keepAnswers(console, answers, reader, makeConverter, progress);
    RunResult result = runConversion(makeConverter, workerCount(), reader, answers.sink(), progress);
    const double seconds = progress.seconds();
    progress.clear();
    console.messages.clear(); // an interruption may have hit a message that was being written
    if (result.isWhole()) {
        try {
            answers.sink().finish();
        } catch (const StreamFailure& failure) {
            result.writeFailure = failure;
        }
    }
    return report(console, answers, result, kept, seconds);
}

/// Writing answers over what is still being read would destroy it.
void RecordsCommand::refuseOverwriting(const Console& console, const ByteSource& records,
                                       const std::optional<std::string>& place) const {
    const auto refuse = [&](const std::optional<FileIdentity>& written) {
        if (isSameFile(written, records.file())) {
            throw Unusable("the answers would overwrite the records");
        }
        refuseOverwritingMore(written);
    };
    refuse(m_answersPath == "-" ? console.output.file() : fileAt(m_answersPath));
    if (place) {
        refuse(fileAt(AnswersFile::partOf(*place)));
    }
}

RecordsCommand::Answers RecordsCommand::openAnswers(Console& console,
                                                    const std::optional<std::string>& place) const {
    if (!place) {
        return m_answersPath == "-" ? Answers(console.output)
                                    : Answers(openOrRefuse(m_answersPath, openSink, s_cannotWrite));
    }
    const std::string part = AnswersFile::partOf(*place);
    const bool isKept = m_resumes && fileAt(part);
    if (m_resumes && !isKept && fileAt(*place)) {
        return Answers(openOrRefuse(*place, openSource, "cannot read the answers "), *place);
    }
    if (m_resumes && !isKept) {
        writeMessage(console, part + " is not there: beginning with the first record");
    }
    const auto open = [&](const std::string& /*path*/) {
        using Begin = AnswersFile::Begin;
        return std::make_unique<AnswersFile>(*place, isKept ? Begin::behind : Begin::anew);
    };
    return Answers(openOrRefuse(part, open, s_cannotWrite), *place, isKept);
}

KeptAnswers RecordsCommand::keepAnswers(Console& console, const Answers& answers, LineReader& records,
                                        const MakeLineConverter& makeConverter, Progress& progress) {
    if (answers.kept() == nullptr) {
        return {};
    }
    try {
        KeptAnswers kept = skipAnswered(*answers.kept(), records, *makeConverter());
        writeMessage(console,
                     "keeping " + inWords(kept.counts.records(), "answer") + " from " + answers.path());
        progress.beginBehind(kept.counts, kept.endOfRecords);
        return kept;
    } catch (const StreamFailure& failure) {
        throw Unusable(std::string("cannot read the records: ") + failure.what());
    } catch (const Refusal& refusal) {
        throw Unusable("cannot go on with " + answers.path() + ": " + refusal.reason());
    }
}

ExitStatus RecordsCommand::report(Console& console, const Answers& answers, const RunResult& result,
                                  const KeptAnswers& kept, double seconds) {
    const bool isStopped = (result.isInterrupted || (interruption() != 0 && result.writeFailure)) &&
                           (!result.writeFailure || isExpected(*result.writeFailure));
    if (result.writeFailure && !isStopped) {
        // Whoever read the answers has enough of them, as in `| head`; that is nothing to speak of.
        if (result.writeFailure->code() != EPIPE) {
            writeMessage(console, std::string("cannot write the answers: ") + result.writeFailure->what() +
                                      answers.whereTheyAre());
        }
        return ExitStatus::partly;
    }
    if (result.readFailure) {
        writeMessage(console, std::string("cannot read the records: ") + result.readFailure->what() +
                                  answers.whereTheyAre());
        if (result.counts.records() == 0) {
            return ExitStatus::unusable;
        }
    }
    Counts counts = kept.counts;
    counts += result.counts;
    FailureTally failures = kept.failures;
    failures.add(result.failures);
    if (isStopped) {
        writeMessage(console,
                     "interrupted behind " + inWords(counts.records(), "record") + answers.whereTheyAre());
    }
    if (answers.wereComplete()) {
        writeMessage(console, answers.path() + " is complete: nothing was to be done");
    }
    writeSummary(console.messages, counts, failures, seconds, console.hasColours, kept.counts.records());
    if (isStopped) {
        return statusOfInterruption();
    }
    return !result.readFailure && counts.converted == counts.records() ? ExitStatus::success
                                                                       : ExitStatus::partly;
}

unsigned RecordsCommand::workerCount() const {
    return m_jobs != 0 ? m_jobs : std::clamp(std::thread::hardware_concurrency(), 1U, s_maxJobs);
}

} // namespace quelt::host
