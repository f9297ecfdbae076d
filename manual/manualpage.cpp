#include "manual/manualpage.h"

#include "manual/appwords.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace manual {

namespace {

/// Text that roff prints as it is.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char letter : text) {
        if (letter == '\\')
            result += "\\e";
        else if (letter == '-')
            result += "\\-";
        else
            result += letter;
    }
    const bool isRequest = result.starts_with('.') || result.starts_with('\'');
    return isRequest ? "\\&" + result : result;
}

std::string bold(const std::string& text) {
    return "\\fB" + escaped(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + escaped(text) + "\\fR";
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

std::string beginningSmall(std::string text) {
    if (!text.empty())
        text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    return text;
}

bool isHelp(const CLI::App& app, const CLI::Option* option) {
    return option == app.get_help_ptr();
}

class Page {
public:
    Page(const CLI::App& app, const ManualText& text) : m_app(app), m_text(text) {}

    std::string written() {
        head();
        options();
        commands();
        for (const std::string& line : split(m_app.get_footer(), "\n"))
            footerSection(line);
        examples();
        seeAlso();
        return m_roff.str();
    }

private:
    void section(const std::string& title) { m_roff << ".SH " << title << '\n'; }

    void entry(const std::string& tag, const std::string& text) {
        m_roff << ".TP\n" << tag << '\n' << escaped(text) << '\n';
    }

    void head() {
        const std::string name = m_app.get_name();
        m_roff << ".TH " << upper(escaped(name)) << " 1 \"" << m_text.date << "\" \"" << m_text.version
               << "\" \"User Commands\"\n";
        section("NAME");
        m_roff << escaped(name) << " \\- " << escaped(beginningSmall(m_app.get_description())) << '\n';
        section("SYNOPSIS");
        m_roff << ".B " << escaped(name) << '\n';
        if (!namedOptions(m_app).empty())
            m_roff << ".RI [ option ]...\n";
        if (!commandsOf(m_app).empty())
            m_roff << ".I command\n.RI [ argument ]...\n";
        section("DESCRIPTION");
        m_roff << escaped(m_text.description) << '\n';
    }

    void options() {
        if (namedOptions(m_app).empty())
            return;
        section("OPTIONS");
        for (const CLI::Option* option : namedOptions(m_app))
            entry(optionTag(*option), option->get_description());
    }

    void commands() {
        if (commandsOf(m_app).empty())
            return;
        section("COMMANDS");
        for (const CLI::App* command : commandsOf(m_app))
            describe(*command, {});
    }

    static std::string optionTag(const CLI::Option& option) {
        std::string tag;
        for (const std::string& name : namesOf(option))
            tag += (tag.empty() ? "" : ", ") + bold(name);
        const std::string value = valueName(option);
        return value.empty() ? tag : tag + ' ' + italic(value);
    }

    /// "pictures get N -o FILE": the command with its arguments and the options that it cannot do without.
    static std::string usage(const CLI::App& command, const std::string& words) {
        std::string line = bold(words);
        for (const CLI::Option* argument : positionals(command))
            line += argument->get_required() ? ' ' + italic(valueName(*argument))
                                             : " [" + italic(valueName(*argument)) + ']';
        for (const CLI::Option* option : namedOptions(command)) {
            if (option->get_required())
                line += ' ' + bold(namesOf(*option).front()) + ' ' + italic(valueName(*option));
        }
        return line;
    }

    void describe(const CLI::App& command, const std::string& parents) {
        const std::string words = parents + command.get_name();
        entry(usage(command, words), command.get_description());
        m_roff << ".RS\n";
        for (const CLI::Option* argument : positionals(command))
            entry(italic(valueName(*argument)), argument->get_description());
        for (const CLI::Option* option : namedOptions(command)) {
            if (!isHelp(command, option))
                entry(optionTag(*option), option->get_description());
        }
        m_roff << ".RE\n";
        for (const CLI::App* inner : commandsOf(command))
            describe(*inner, words + ' ');
    }

    void footerSection(const std::string& line) {
        const std::vector<std::string> parts = split(line, ": ");
        if (parts.size() != 2)
            return;
        section(upper(parts[0]));
        for (const std::string& item : split(parts[1], ", ")) {
            const std::size_t blank = std::min(item.find(' '), item.size());
            entry(bold(item.substr(0, blank)), item.substr(std::min(blank + 1, item.size())));
        }
    }

    void examples() {
        if (m_text.examples.empty())
            return;
        section("EXAMPLES");
        for (const ManualExample& example : m_text.examples) {
            m_roff << ".PP\n" << escaped(example.purpose) << ":\n.PP\n.EX\n";
            for (const std::string& line : example.lines)
                m_roff << "    " << escaped(line) << '\n';
            m_roff << ".EE\n";
        }
    }

    void seeAlso() {
        section("SEE ALSO");
        for (const std::string& page : m_text.seeAlso)
            m_roff << ".BR " << escaped(page) << " (1)" << (page == m_text.seeAlso.back() ? "" : ",") << '\n';
    }

    const CLI::App& m_app;
    const ManualText& m_text;
    std::ostringstream m_roff;
};

} // namespace

std::string manualPage(const CLI::App& app, const ManualText& text) {
    return Page(app, text).written();
}

} // namespace manual
