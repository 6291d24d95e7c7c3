#pragma once

#include "commands/RecordConverter.h"
#include "commands/RecordsCommand.h"

#include <memory>
#include <string>

namespace quelt::host {

/// `convert`: converts records, one JSON object a line, and answers each with one line.
class ConvertCommand : public RecordsCommand {
public:
    CLI::App& declare(CLI::App& application) override;
    [[nodiscard]] std::vector<HelpSection> helpSections() const override;

protected:
    void refuseOverwritingMore(const std::optional<FileIdentity>& answers) const override;
    [[nodiscard]] MakeLineConverter prepare() override;

private:
    std::string m_contextPath;
    ConvertOptions m_options;
    std::unique_ptr<LoadedContext> m_pContext;
};

} // namespace quelt::host
