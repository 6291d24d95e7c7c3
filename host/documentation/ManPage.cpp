#include "documentation/ManPage.h"

#include "documentation/Roff.h"

#include <algorithm>
#include <cctype>

namespace quelt::host {

namespace {

using roff::bold;
using roff::escape;
using roff::italic;

std::string inCapitals(std::string_view text) {
    std::string capitals(text);
    std::ranges::transform(capitals, capitals.begin(),
                           [](unsigned char letter) { return std::toupper(letter); });
    return capitals;
}

std::string beginningSmall(std::string text) {
    if (!text.empty()) {
        text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    }
    return text;
}

/// "-o, --output FILE", or the name of an argument.
std::string headOf(const OptionDescription& option) {
    if (option.isArgument) {
        return italic(option.value);
    }
    std::string head;
    for (const std::string& name : option.names) {
        head += (head.empty() ? "" : ", ") + bold(name);
    }
    return option.value.empty() ? head : head + " " + italic(option.value);
}

/// "[--jobs N]", with the longest of its names.
std::string synopsisOf(const OptionDescription& option) {
    std::string text = option.isArgument ? italic(option.value) : bold(option.names.back());
    if (!option.isArgument && !option.value.empty()) {
        text += " " + italic(option.value);
    }
    return option.isRequired ? text : "[" + text + "]";
}

class PageWriter {
public:
    PageWriter(const ApplicationDescription& description, std::string_view version)
        : m_description(description), m_application(description.application) {
        m_page = ".\\\" Made from the declaration of the command line, with all that its help says.\n"
                 ".TH " +
                 escape(inCapitals(m_application.name)) + " 1 \"\" \"" +
                 escape(m_application.name + " " + std::string(version)) +
                 "\" \"User Commands\"\n"
                 ".nh\n"    // words are whole, so that what is shown can be typed
                 ".ad l\n"; // and blanks single
    }

    std::string write() && {
        writeName();
        writeSynopsis();
        heading("DESCRIPTION");
        line(escape(m_application.meaning + "."));
        paragraph("The first argument says what is done. Each command reads records, one JSON object a line, "
                  "and answers "
                  "each with one line, in the same order.");
        heading("COMMANDS");
        for (const CommandDescription& command : m_description.commands) {
            writeCommand(command);
        }
        heading("OPTIONS");
        writeOptions(m_application);
        paragraph("Behind a command, --help describes that command.");
        for (const HelpSection& section : m_application.sections) {
            heading(inCapitals(section.title));
            writeSection(section);
        }
        writeExamples();
        heading("SEE ALSO");
        line("The README of the project, which says how contexts and records are written, its examples, "
             "which show every "
             "form, and the documentation of the libraries.");
        return std::move(m_page);
    }

private:
    void line(std::string_view text) { m_page.append(text).append("\n"); }
    void heading(std::string_view title) { line(".SH " + escape(title)); }
    void paragraph(std::string_view text) {
        line(".PP");
        line(escape(text));
    }
    void item(const std::string& head, const std::string& body) {
        line(".TP");
        line(head);
        line(body);
    }

    void writeName() {
        heading("NAME");
        line(escape(m_application.name) + " \\- " + escape(beginningSmall(m_application.meaning)));
    }

    void writeSynopsis() {
        heading("SYNOPSIS");
        for (const CommandDescription& command : m_description.commands) {
            writeSynopsis(command, m_application.name + " " + command.name);
        }
        writeSynopsis(m_application, m_application.name);
    }

    /// Options that stand alone have lines of their own, without a command.
    void writeSynopsis(const CommandDescription& command, const std::string& words) {
        std::string options;
        for (const OptionDescription& option : command.options) {
            if (option.standsAlone && isApplication(command)) {
                options += (options.empty() ? "" : " | ") + bold(option.names.back());
            } else if (!option.standsAlone) {
                options += (options.empty() ? "" : " ") + synopsisOf(option);
            }
        }
        line(".HP 8");
        line(bold(words) + " " + options);
    }

    void writeCommand(const CommandDescription& command) {
        line(".SS " + escape(command.name));
        line(escape(command.meaning + "."));
        writeOptions(command);
        for (const HelpSection& section : command.sections) {
            if (section.title != examplesTitle && !isOfApplication(section)) {
                line(".PP");
                line(bold(std::string(section.title)) + ":");
                writeSection(section);
            }
        }
    }

    [[nodiscard]] bool isApplication(const CommandDescription& command) const {
        return &command == &m_application;
    }

    /// Whether the section is one that all commands share, and the page has once.
    [[nodiscard]] bool isOfApplication(const HelpSection& section) const {
        return std::ranges::any_of(m_application.sections,
                                   [&](const HelpSection& other) { return other.title == section.title; });
    }

    void writeOptions(const CommandDescription& command) {
        for (const OptionDescription& option : command.options) {
            if (option.standsAlone && !isApplication(command)) {
                continue; // the same of each
            }
            std::string meaning = escape(option.meaning) + ".";
            if (option.isRequired) {
                meaning += " Required.";
            }
            if (!option.defaultValue.empty()) {
                meaning += " Default: " + escape(option.defaultValue) + ".";
            }
            item(headOf(option), meaning);
        }
    }

    void writeSection(const HelpSection& section) {
        if (!section.text.empty()) {
            line(escape(section.text));
        }
        for (const HelpEntry& entry : section.entries) {
            item(bold(entry.term), escape(entry.meaning));
        }
    }

    void writeExamples() {
        heading("EXAMPLES");
        for (const CommandDescription& command : m_description.commands) {
            for (const HelpSection& section : command.sections) {
                if (section.title == examplesTitle) {
                    writeSection(section);
                }
            }
        }
    }

    const ApplicationDescription& m_description;
    const CommandDescription& m_application;
    std::string m_page;
};

} // namespace

std::string manPage(const ApplicationDescription& description, std::string_view version) {
    return PageWriter(description, version).write();
}

} // namespace quelt::host
