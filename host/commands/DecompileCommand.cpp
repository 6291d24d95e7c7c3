#include "commands/DecompileCommand.h"

#include "interchange/CompiledReader.h"
#include "interchange/CompiledWriter.h"
#include "interchange/Fields.h"

#include <CLI/CLI.hpp>

namespace quelt::host {

namespace {

class RecordDecompiler : public LineConverter {
private:
    void convertRecord(simdjson::dom::element root, Counts& counts) override {
        const Value value(root, Place());
        const Fields<Key::id, Key::binary> fields(value);
        const std::string_view id = fields.need<Key::id>().text();
        const Value binary = fields.need<Key::binary>();
        const std::unique_ptr<QueltFltEffectivity> effectivity = decompile(readBinary(binary), binary);
        if (!isWritable(*effectivity)) {
            binary.refuse("the name of an option's value is not UTF-8");
        }
        m_writer.beginObject();
        m_writer.key(Key::id);
        m_writer.text(id);
        m_writer.key(Key::compiled);
        writeCompiled(m_writer, *effectivity);
        m_writer.endObject();
        ++counts.converted;
    }
};

} // namespace

CLI::App& DecompileCommand::declare(CLI::App& application) {
    CLI::App* const command = application.add_subcommand("decompile", "Spell compiled binaries out");
    declareStreams(*command);
    declareJobs(*command);
    return *command;
}

std::vector<HelpSection> DecompileCommand::helpSections() const {
    return {{.title = "Records",
             .text = {},
             .entries =
                 {{R"({"id": ..., "binary": "..."})",
                   R"(with the binary in base64, becomes {"id": ..., "compiled": ...}, whatever the binary )"
                   "holds, as long as its names are UTF-8; whether it can be read back into changes is for "
                   "convert to say"}}},
            exitStatusSection(),
            {.title = examplesTitle,
             .text = {},
             .entries = {{"quelt-migrate decompile binaries.ndjson | quelt-migrate compile",
                          "gives the same binaries again"}}}};
}

MakeLineConverter DecompileCommand::prepare() {
    return [] { return std::make_unique<RecordDecompiler>(); };
}

} // namespace quelt::host
