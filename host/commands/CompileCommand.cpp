#include "commands/CompileCommand.h"

#include "interchange/Base64.h"
#include "interchange/CompiledReader.h"
#include "interchange/Fields.h"

#include <CLI/CLI.hpp>

namespace quelt::host {

namespace {

class RecordCompiler : public LineConverter {
private:
    void convertRecord(simdjson::dom::element root, Counts& counts) override {
        const Value value(root, Place());
        const Fields<Key::id, Key::compiled> fields(value);
        const std::string_view id = fields.need<Key::id>().text();
        const QueltBioBuffer binary = compile(fields.need<Key::compiled>());
        m_writer.beginObject();
        m_writer.key(Key::id);
        m_writer.text(id);
        m_writer.key(Key::binary);
        m_writer.text(encodeBase64(binary.getBytes()));
        m_writer.endObject();
        ++counts.converted;
    }
};

} // namespace

CLI::App& CompileCommand::declare(CLI::App& application) {
    CLI::App* const command =
        application.add_subcommand("compile", "Turn effectivities that are spelt out into compiled binaries");
    declareStreams(*command);
    declareJobs(*command);
    return *command;
}

std::vector<HelpSection> CompileCommand::helpSections() const {
    return {{.title = "Records",
             .text = {},
             .entries = {{R"({"id": ..., "compiled": ...})",
                          R"(becomes {"id": ..., "binary": "..."}, with the binary in base64)"}}},
            exitStatusSection(),
            {.title = examplesTitle,
             .text = {},
             .entries = {{"quelt-migrate compile changes.ndjson -o binaries.ndjson",
                          "compiles changes that are spelt out"}}}};
}

MakeLineConverter CompileCommand::prepare() {
    return [] { return std::make_unique<RecordCompiler>(); };
}

} // namespace quelt::host
