#include "commands/ConvertCommand.h"

#include "interchange/ContextReader.h"

#include <CLI/CLI.hpp>

namespace quelt::host {

namespace {

std::string readContextFile(const std::string& path) {
    std::string text;
    try {
        text = readAll(*openSource(path));
    } catch (const StreamFailure& failure) {
        throw Unusable("cannot read the context " + path + ": " + failure.what());
    }
    text.reserve(text.size() + simdjson::SIMDJSON_PADDING);
    return text;
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

} // namespace

CLI::App& ConvertCommand::declare(CLI::App& application) {
    CLI::App* const command = application.add_subcommand(
        "convert",
        "Convert records (one JSON object a line) and answer each with one line, in the same order");
    command->add_option("--context", m_contextPath, "The dictionaries, variables and effectivities")
        ->required()
        ->type_name("FILE");
    declareStreams(*command);
    command->add_flag(
        "--branch", m_options.branchesAll,
        "Turn the flat series of what was converted into branching ones, for all records and not "
        "only for those that ask for it");
    command->add_flag("--with-input", m_options.withInput,
                      "Show in each answer the expression as conversion left it");
    command->add_flag("--trace", m_options.withTrace, "Show in each answer how the conversion went");
    declareJobs(*command);
    return *command;
}

void ConvertCommand::refuseOverwritingMore(const std::optional<FileIdentity>& answers) const {
    if (isSameFile(answers, fileAt(m_contextPath))) {
        throw Unusable("the answers would overwrite the context");
    }
}

std::vector<HelpSection> ConvertCommand::helpSections() const {
    return {{.title = "Records",
             .text = {},
             .entries = {{R"({"id": ..., "list": [...]})", "a specification list"},
                         {R"({"id": ..., "tree": ...})", R"(a tree; a change with "change": true)"},
                         {R"({"id": ..., "compiled": ...})", "a compiled change that is spelt out"},
                         {R"({"id": ..., "binary": "..."})", "a compiled change as bytes, in base64"}}},
            exitStatusSection(),
            {.title = examplesTitle,
             .text = {},
             .entries = {
                 {"quelt-migrate convert --context context.json records.ndjson -o answers.ndjson",
                  "converts a file of records into a file of answers"},
                 {"zcat records.gz | quelt-migrate convert --context context.json -j 0 | gzip > answers.gz",
                  "converts a compressed stream on all processors"}}}};
}

MakeLineConverter ConvertCommand::prepare() {
    m_pContext = loadContext(m_contextPath);
    return [this] { return std::make_unique<RecordConverter>(*m_pContext, m_options); };
}

} // namespace quelt::host
