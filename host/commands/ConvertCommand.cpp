#include "commands/ConvertCommand.h"

#include "commands/ConversionRun.h"
#include "commands/Summary.h"
#include "interchange/ContextReader.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <optional>
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

constexpr const char* s_footer =
    R"(Exit status: 0 every record converted; 1 some failed or were malformed, or not all answers could be
written; 2 the command line or the context could not be used, and nothing was converted.)";

/// Says why a command cannot do its work, on one line.
class Unusable : public Refusal {
public:
    using Refusal::Refusal;
};

std::string readContextFile(const std::string& path) {
    try {
        std::string text = readAll(*openSource(path));
        text.reserve(text.size() + simdjson::SIMDJSON_PADDING);
        return text;
    } catch (const StreamFailure& failure) {
        throw Unusable("cannot read the context " + path + ": " + failure.what());
    }
}

std::unique_ptr<LoadedContext> loadContext(const std::string& path) {
    const std::string text = readContextFile(path);
    try {
        return readContext({text.data(), text.size()});
    } catch (const SyntaxRefusal& refusal) {
        const TextPosition position = refusal.position().value_or(TextPosition{});
        throw Unusable(path + ":" + std::to_string(position.line) + ":" + std::to_string(position.column) +
                       (refusal.isJson() ? ": " : ": not JSON: ") + refusal.reason());
    } catch (const Refusal& refusal) {
        throw Unusable(path + ": " + refusal.reason());
    }
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

bool isSameFile(const std::optional<FileIdentity>& left, const std::optional<FileIdentity>& right) {
    return left.has_value() && left == right;
}

/// Writing answers over what is still being read would destroy it.
void refuseOverwriting(const std::optional<FileIdentity>& answers, const ByteSource& records,
                       const std::string& contextPath) {
    if (isSameFile(answers, records.file())) {
        throw Unusable("the answers would overwrite the records");
    }
    if (isSameFile(answers, fileAt(contextPath))) {
        throw Unusable("the answers would overwrite the context");
    }
}

} // namespace

CLI::App& ConvertCommand::declare(CLI::App& application) {
    CLI::App* const command = application.add_subcommand(
        "convert",
        "Convert records (one JSON object a line) and answer each with one line, in the same order");
    command->add_option("--context", m_contextPath, "The dictionaries, variables and effectivities")
        ->required()
        ->type_name("FILE");
    command->add_option("records", m_recordsPath, "The records; standard input when left out or -")
        ->type_name("FILE");
    command
        ->add_option("-o,--output", m_answersPath, "Where the answers go; standard output when left out or -")
        ->type_name("FILE");
    command->add_flag("--branch", m_branch, "Turn flat series into branching ones (not supported yet)");
    command->add_flag("--with-input", m_options.withInput,
                      "Show in each answer the expression as conversion left it");
    command->add_flag("--trace", m_options.withTrace, "Show in each answer how the conversion went");
    command
        ->add_option("-j,--jobs", m_jobs,
                     "How many threads convert; 0 for one a processor. Answers stay in order")
        ->check(checkJobs)
        ->default_val(1)
        ->type_name("N");
    command->footer(s_footer);
    return *command;
}

ExitStatus ConvertCommand::run(Console& console) {
    try {
        return convert(console);
    } catch (const Unusable& reason) {
        writeMessage(console, reason.reason());
        return ExitStatus::unusable;
    }
}

ExitStatus ConvertCommand::convert(Console& console) const {
    if (m_branch) {
        throw Unusable("--branch is not supported yet");
    }
    const auto openedRecords = openUnlessOwn(m_recordsPath, openSource, "cannot read the records ");
    ByteSource& records = openedRecords ? *openedRecords : console.input;
    refuseOverwriting(m_answersPath == "-" ? console.output.file() : fileAt(m_answersPath), records,
                      m_contextPath);
    const std::unique_ptr<LoadedContext> context = loadContext(m_contextPath);
    const auto openedAnswers = openUnlessOwn(m_answersPath, openSink, "cannot write the answers ");
    ByteSink& answers = openedAnswers ? *openedAnswers : console.output;
    if (!openedRecords && console.inputIsTerminal) {
        writeMessage(console, "reading records from the terminal, one JSON object a line; Ctrl-D ends");
    }

    Progress progress(console, records.size());
    RunResult result = runConversion(*context, m_options, workerCount(), records, answers, progress);
    const double seconds = progress.seconds();
    progress.clear();
    finish(answers, result);
    return report(console, result, seconds);
}

void ConvertCommand::finish(ByteSink& answers, RunResult& result) {
    try {
        answers.finish();
    } catch (const StreamFailure& failure) {
        if (!result.writeFailure) {
            result.writeFailure = failure;
        }
    }
}

ExitStatus ConvertCommand::report(Console& console, const RunResult& result, double seconds) {
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

unsigned ConvertCommand::workerCount() const {
    return m_jobs != 0 ? m_jobs : std::clamp(std::thread::hardware_concurrency(), 1U, s_maxJobs);
}

} // namespace quelt::host
