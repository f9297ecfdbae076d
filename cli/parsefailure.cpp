#include "cli/parsefailure.h"

#include "cli/options.h"

#include <QCoreApplication>

#include <CLI/CLI.hpp>

namespace cli {

QString tr(const char* text) {
    return QCoreApplication::translate("Options", text);
}

namespace {

QString commandNames(const CLI::App& app) {
    QStringList names;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.append(QString::fromStdString(command->get_name()));
    return names.join(QLatin1String(", "));
}

/// The innermost command that was given.
const CLI::App& chosenCommand(const CLI::App& app) {
    const CLI::App* chosen = &app;
    while (!chosen->get_subcommands().empty())
        chosen = chosen->get_subcommands().front();
    return *chosen;
}

/// An option of the innermost command or a general one; a flag's name may lack its dashes.
const CLI::Option* optionNamed(const CLI::App& app, const std::string& name) {
    for (const CLI::App* command = &chosenCommand(app); command != nullptr; command = command->get_parent()) {
        for (const std::string& spelled : {name, "--" + name}) {
            if (const CLI::Option* const option = command->get_option_no_throw(spelled))
                return option;
        }
    }
    return nullptr;
}

QString wrongValue(const CLI::Option& option) {
    const QString name = QString::fromStdString(option.get_name());
    const QString value = QString::fromStdString(option.get_type_name());
    if (option.get_positional())
        return tr("值太少或太多，需要：%1").arg(value);
    return option.get_expected_max() == 0 ? tr("%1 不带值").arg(name) : tr("%1 需要值：%2").arg(name, value);
}

} // namespace

void refuseEmptyValues(const CLI::App& app, const std::vector<std::string>& arguments) {
    std::vector<const CLI::App*> commands{&app};
    for (std::size_t i = 0; i < commands.size(); ++i) {
        for (const CLI::App* const command :
             commands[i]->get_subcommands([](const CLI::App*) { return true; }))
            commands.push_back(command);
        for (const std::string& argument : arguments) {
            const CLI::Option* const option =
                argument.starts_with("--") && argument.find('=') == argument.size() - 1
                    ? commands[i]->get_option_no_throw(argument.substr(0, argument.size() - 1))
                    : nullptr;
            if (option != nullptr)
                throw UsageError(wrongValue(*option).toStdString());
        }
    }
}

QString parseFailure(const CLI::App& app, const CLI::ParseError& error) {
    const QString usage = tr("；用 --help 查看用法");
    const std::vector<std::string> unknown = app.remaining(true);
    if (!unknown.empty() && unknown.front().starts_with('-'))
        return tr("没有选项“%1”").arg(QString::fromStdString(unknown.front())) + usage;
    const CLI::App& command = chosenCommand(app);
    const QString names = commandNames(command);
    if (!unknown.empty() && !names.isEmpty())
        return tr("没有命令“%1”，可用：%2").arg(QString::fromStdString(unknown.front()), names) + usage;
    if (!unknown.empty())
        return tr("多余的参数“%1”").arg(QString::fromStdString(unknown.front())) + usage;
    if (&command == &app && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
        return tr("没有命令，可用：%1").arg(names) + usage;
    const std::string words = error.what(); // it begins with the option's name
    if (const CLI::Option* const option = optionNamed(app, words.substr(0, words.find_first_of(": "))))
        return wrongValue(*option) + usage;
    return tr("命令行不对") + usage;
}

} // namespace cli
