#include "cli/options.h"

#include "cli/parsefailure.h"
#include "service/finder.h"
#include "service/report.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>
#include <limits>

namespace cli {

namespace {

std::string help(const char* text) {
    return tr(text).toStdString();
}

[[noreturn]] void refuse(const QString& text) {
    throw UsageError(text.toStdString());
}

/// Decimal, or hexadecimal behind 0x.
std::optional<std::uint64_t> numberIn(std::string_view text) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    std::uint64_t number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

std::uint64_t checkedNumber(const QString& what, const std::string& text, std::uint64_t least,
                            std::uint64_t most) {
    const auto number = numberIn(text);
    if (!number || *number < least || *number > most)
        refuse(tr("%1：“%2”不是 %3 到 %4 之间的数")
                   .arg(what, QString::fromStdString(text))
                   .arg(least)
                   .arg(most));
    return *number;
}

std::string typeNames() {
    std::string names;
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes)
        names += (names.empty() ? "" : ", ") + std::to_string(static_cast<unsigned>(type.type)) + ' ' +
                 std::string(type.optionName);
    return names;
}

protocol::CameraType typeIn(const std::string& text) {
    const auto number = numberIn(text);
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes) {
        if (text == type.optionName || number == static_cast<std::uint64_t>(type.type))
            return type.type;
    }
    refuse(
        tr("没有类型“%1”，可用：%2").arg(QString::fromStdString(text), QString::fromStdString(typeNames())));
}

std::uint32_t rateIn(const std::string& text) {
    return static_cast<std::uint32_t>(checkedNumber(tr("波特率"), text, 1, 4'000'000));
}

std::uint8_t addressIn(const std::string& text) {
    return static_cast<std::uint8_t>(
        checkedNumber(tr("从机地址"), text, 0, std::numeric_limits<std::uint8_t>::max()));
}

std::vector<std::string> listIn(const std::string& text) {
    return CLI::detail::split(text, ',');
}

/// Text that sets a field through a function.
CLI::Option* addText(CLI::App& app, const std::string& names, const std::string& parameter, const char* text,
                     const std::function<void(const std::string&)>& set) {
    return app.add_option_function<std::string>(names, set, help(text))->type_name(parameter)->take_last();
}

void addFlag(CLI::App& app, const char* names, bool& field, const char* text) {
    app.add_flag(names, field, help(text))->disable_flag_override();
}

constexpr std::uint64_t mostRepeats = 1000;

/// The commands share the table's one Command.
class CommandTable {
public:
    CommandTable(CLI::App& app, Command& command) : m_app(app), m_command(command) {
        m_app.require_subcommand(1);
    }

    void addAll() {
        addSearching();
        addReadings();
        addSettings();
        addPictures();
        addActions();
        addWorkshop();
    }

private:
    CLI::App* add(CLI::App& parent, const char* name, const char* text, Verb verb) {
        CLI::App* const app = parent.add_subcommand(name, help(text));
        app->callback([this, verb] { m_command.verb = verb; });
        return app;
    }
    CLI::App* add(const char* name, const char* text, Verb verb) { return add(m_app, name, text, verb); }

    void addSearching() {
        add("ports", "列出串口：名称、说明、硬件标识", Verb::ports);
        CLI::App* const find = add("find", "只用心跳查找摄像头：串口、波特率、从机地址", Verb::find);
        addText(*find, "--rates", "R,..", "要试的波特率，默认全部常用值", [this](const std::string& text) {
            for (const std::string& each : listIn(text))
                m_command.rates.push_back(rateIn(each));
        });
        addText(*find, "--addresses", "A,..|all", "要试的从机地址，默认各类型的常用地址；all：0 到 255",
                [this](const std::string& text) { setAddresses(text); });
        addFlag(*find, "--first", m_command.firstOnly, "找到第一台就结束");
    }

    void setAddresses(const std::string& text) {
        if (text == "all") {
            m_command.addresses = service::allAddresses();
            return;
        }
        for (const std::string& each : listIn(text))
            m_command.addresses.push_back(addressIn(each));
    }

    void addReadings() {
        add("heartbeat", "测试心跳", Verb::heartbeat);
        add("versions", "读取版本号", Verb::versions);
        add("model", "读取模型信息", Verb::model);
        add("orientation", "读取安装位置：仰俯角、横滚角、偏航角、加速度", Verb::orientation);
        add("gyro", "陀螺仪自检", Verb::gyro);
    }

    CLI::App* addSetting(const char* name, const char* text, Verb verb, const char* parameter, int count) {
        CLI::App* const app = add(name, text, verb);
        app->add_option("VALUE", m_command.values, help("要写入的值，写入后读回核对；不给则只读取"))
            ->type_name(parameter)
            ->expected(0, count);
        return app;
    }

    void addSettings() {
        addSetting("sn", "读取或写入序列号", Verb::serialNumber, "SN", 1);
        addSetting("heater", "读取或写入加热丝占空比，0 到 100", Verb::heater, "N", 1);
        addSetting("compression", "读取或写入图片压缩率，0 到 100", Verb::compression, "N", 1);
        addSetting("angles", "读取或写入两个抓图角度，各 0 到 255", Verb::angles, "A B", 2);
        addSetting("direction", "读取或写入抓图方向", Verb::direction, "clockwise|anticlockwise", 1);
        addSetting("gyro-state", "读取或写入陀螺仪开关", Verb::gyroState, "on|off", 1);
    }

    void addFile(CLI::App& app, const char* names, const char* text, bool required) {
        app.add_option(names, m_command.file, help(text))->type_name("FILE")->required(required);
    }

    void addId(CLI::App& app) {
        app.add_option_function<std::string>(
               "ID",
               [this](const std::string& text) {
                   m_command.picture = static_cast<std::uint16_t>(
                       checkedNumber(tr("图片编号"), text, 0, std::numeric_limits<std::uint16_t>::max()));
               },
               help("图片编号"))
            ->type_name("N")
            ->required();
    }

    void addPictures() {
        addFile(*add("capture", "拍一张照片并下载，按类型的方式", Verb::capture), "-o,--output",
                "图片文件，默认 picture.jpg", false);
        CLI::App* const pictures = add("pictures", "摄像头里的图片", Verb::listPictures);
        pictures->require_subcommand(0, 1);
        pictures->callback([this, pictures] { // runs after that of its own command
            if (pictures->get_subcommands().empty())
                m_command.verb = Verb::listPictures;
        });
        add(*pictures, "list", "列出图片", Verb::listPictures);
        CLI::App* const get = add(*pictures, "get", "下载一张图片", Verb::getPicture);
        addId(*get);
        addFile(*get, "-o,--output", "图片文件", true);
        CLI::App* const all = add(*pictures, "get-all", "下载全部图片", Verb::getAllPictures);
        all->add_option("-d,--directory", m_command.folder, help("存放图片的文件夹"))
            ->type_name("FOLDER")
            ->required();
        addId(*add(*pictures, "delete", "删除一张图片", Verb::deletePicture));
        add(*pictures, "delete-all", "删除全部图片", Verb::deleteAllPictures);
    }

    void addActions() {
        CLI::App* const upload = add("upload", "升级应用、系统或模型", Verb::upload);
        upload
            ->add_option_function<std::string>(
                "KIND", [this](const std::string& text) { setKind(text); }, help("app、system 或 model"))
            ->type_name("app|system|model")
            ->required();
        addFile(*upload, "FILE", "固件或模型文件", true);
        upload->add_option("--name", m_command.name, help("模型名称，默认文件名"))->type_name("NAME");
        upload
            ->add_flag_callback(
                "--no-wait", [this] { m_command.waits = false; }, help("不等待摄像头重新启动"))
            ->disable_flag_override();
        add("reboot", "重启摄像头", Verb::reboot);
        add("factory-reset", "恢复出厂设置", Verb::factoryReset);
        add("door", "模拟开关门", Verb::door)
            ->add_option_function<std::string>(
                "STATE",
                [this](const std::string& text) {
                    if (text != "open" && text != "close")
                        refuse(tr("开关门：请用 open 或 close"));
                    m_command.opens = text == "open";
                },
                help("open 或 close"))
            ->type_name("open|close")
            ->required();
    }

    void setKind(const std::string& text) {
        if (text == "app")
            m_command.kind = UploadKind::app;
        else if (text == "system")
            m_command.kind = UploadKind::system;
        else if (text == "model")
            m_command.kind = UploadKind::model;
        else
            refuse(tr("升级：没有“%1”，请用 app、system 或 model").arg(QString::fromStdString(text)));
    }

    void addWorkshop() {
        CLI::App* const check = add("check", "读取全部可读的内容并判断，一份报告", Verb::check);
        addFile(*check, "-o,--output", "报告文件：.html、.pdf、.json 或 .csv", false);
        addFlag(*check, "--picture", m_command.takesPicture, "同时拍一张照片");
        CLI::App* const conform = add("conform", "检验摄像头的应答，只用读取命令", Verb::conform);
        addFile(*conform, "-o,--output", "配置档，虚拟摄像头可照此工作", false);
        addFlag(*conform, "--with-pictures", m_command.takesPicture, "同时拍一张照片");
        conform->add_option("--with-upload", m_command.uploadFile, help("同时升级应用，摄像头会重新启动"))
            ->type_name("FILE");
        addText(*conform, "--repeats", "N", "每个请求的次数，默认 20", [this](const std::string& text) {
            m_command.repeats = static_cast<int>(checkedNumber(tr("次数"), text, 1, mostRepeats));
        });
        CLI::App* const batch =
            add("batch", "执行文件里的任务，每行“PORT ADDRESS TYPE COMMAND...”，各串口并行", Verb::batch);
        addFile(*batch, "JOBS", "任务文件", true);
        addFlag(*batch, "--keep-going", m_command.keepsGoing, "任务失败后继续该串口的其余任务");
        batch->add_option("--resume", m_command.stateFile, help("记录已完成的任务，中断后接着做"))
            ->type_name("STATE");
        addText(*add("watch", "不断测试心跳和线路质量，直到 Ctrl+C", Verb::watch), "--interval", "S",
                "间隔秒数，默认 1", [this](const std::string& text) {
                    m_command.interval = std::chrono::seconds(checkedNumber(tr("间隔"), text, 1, 3600));
                });
    }

    CLI::App& m_app;
    Command& m_command;
};

void checkNumbers(const std::vector<std::string>& values, const QString& what, std::size_t count,
                  std::uint64_t most) {
    if (values.size() != count)
        refuse(tr("%1：需要 %2 个值").arg(what).arg(count));
    for (const std::string& value : values)
        checkedNumber(what, value, 0, most);
}

void checkWord(const std::vector<std::string>& values, const QString& what, const char* first,
               const char* second) {
    if (values.front() != first && values.front() != second)
        refuse(tr("%1：请用 %2 或 %3").arg(what, QLatin1String(first), QLatin1String(second)));
}

/// Values that are out of range are refused before the port is opened.
void checkValues(const Command& command) {
    constexpr std::size_t longestSerialNumber = 64; // bytes
    constexpr std::uint64_t percent = 100;
    const std::vector<std::string>& values = command.values;
    if (values.empty())
        return;
    switch (command.verb) {
    case Verb::serialNumber:
        if (values.front().empty() || values.front().size() > longestSerialNumber)
            refuse(tr("序列号：需要 1 到 %1 个字节").arg(longestSerialNumber));
        break;
    case Verb::heater:
        checkNumbers(values, tr("加热丝占空比"), 1, percent);
        break;
    case Verb::compression:
        checkNumbers(values, tr("图片压缩率"), 1, percent);
        break;
    case Verb::angles:
        checkNumbers(values, tr("抓图角度"), 2, std::numeric_limits<std::uint8_t>::max());
        break;
    case Verb::direction:
        checkWord(values, tr("抓图方向"), "clockwise", "anticlockwise");
        break;
    case Verb::gyroState:
        checkWord(values, tr("陀螺仪开关"), "on", "off");
        break;
    default:
        break;
    }
}

void checkReportName(const Command& command) {
    if (command.verb == Verb::check && !command.file.empty() &&
        !service::isReportName(QString::fromStdString(command.file)))
        refuse(tr("报告文件的扩展名必须是 .html、.pdf、.json 或 .csv"));
}

void addGeneral(CLI::App& app, Options& options) {
    app.set_help_flag("-h,--help", help("显示帮助"));
    app.set_version_flag("--version", std::string(CAMERA_TOOL_VERSION), help("显示版本"));
    app.add_option("-p,--port", options.ports, help("串口，可重复；默认唯一的串口"))
        ->type_name("PORT")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    addText(app, "-b,--baud", "RATE", "波特率，默认类型的常用值",
            [&options](const std::string& text) { options.rate = rateIn(text); });
    addText(app, "-a,--address", "ADDRESS", "从机地址 0 到 255，可用 0x；默认类型的常用值",
            [&options](const std::string& text) { options.address = addressIn(text); });
    addText(app, "-t,--type", "TYPE", "摄像头类型，编号或名称，默认 0", [&options](const std::string& text) {
        options.type = typeIn(text);
        options.typeGiven = true;
    });
    addFlag(app, "--json", options.json, "每个串口输出一行 JSON");
    app.add_option("--record", options.recordFile, help("把线路上的字节录到新文件"))->type_name("FILE");
    addFlag(app, "-y,--yes", options.confirmed, "不询问，直接执行会改变摄像头的命令");
    addFlag(app, "-q,--quiet", options.quiet, "不显示进度");
    addFlag(app, "-v,--verbose", options.verbose, "在标准错误输出显示客户端的诊断行");
    app.footer(
        tr("类型：%1\n退出码：0 完成，1 摄像头拒绝或结果不对，2 用法，3 串口打不开，4 没有应答，5 文件，"
           "130 中断")
            .arg(QString::fromStdString(typeNames()))
            .toStdString());
}

/// The command with its own arguments: what follows its name, without the general options.
QStringList commandWordsIn(const CLI::App& app, const std::vector<std::string>& arguments) {
    QStringList words;
    const std::string name = app.get_subcommands().front()->get_name();
    for (auto word = std::find(arguments.begin(), arguments.end(), name); word != arguments.end(); ++word) {
        const std::string option = word->substr(0, word->find('='));
        const CLI::Option* const general = app.get_option_no_throw(option);
        if (general == nullptr)
            words.append(QString::fromStdString(*word));
        else if (general->get_expected_min() > 0 && option == *word && word + 1 != arguments.end())
            ++word; // its value
    }
    return words;
}

} // namespace

bool Command::isDestructive() const {
    switch (verb) {
    case Verb::serialNumber:
    case Verb::heater:
    case Verb::compression:
    case Verb::angles:
    case Verb::direction:
    case Verb::gyroState:
        return !values.empty();
    case Verb::deletePicture:
    case Verb::deleteAllPictures:
    case Verb::upload:
    case Verb::reboot:
    case Verb::factoryReset:
        return true;
    case Verb::conform:
        return !uploadFile.empty();
    default:
        return false;
    }
}

bool Options::writesDocument() const {
    return command.verb == Verb::check && !command.file.empty() && !command.file.ends_with(".json");
}

std::uint32_t Options::usedRate() const {
    return rate.value_or(protocol::infoOf(type).baudRate);
}

std::uint8_t Options::usedAddress() const {
    return address.value_or(protocol::infoOf(type).usualAddress);
}

void describeOptions(CLI::App& app, Options& options) {
    app.name("shelf-camera");
    app.description(help("货架摄像头的命令行工具"));
    app.fallthrough(); // general options may stand behind the command
    addGeneral(app, options);
    const auto table = std::make_shared<CommandTable>(app, options.command);
    table->addAll();
    app.parse_complete_callback([table] {}); // the options' functions live as long as the app
}

Options parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    CLI::App app;
    describeOptions(app, options);
    refuseEmptyValues(app, arguments);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend())); // from the back
    } catch (const CLI::CallForHelp&) {
        options.action = Options::Action::help;
        options.help = QString::fromStdString(app.help());
        return options;
    } catch (const CLI::CallForVersion&) {
        options.action = Options::Action::version;
        return options;
    } catch (const CLI::ParseError& error) {
        refuse(parseFailure(app, error));
    }
    options.command.words = commandWordsIn(app, arguments);
    checkValues(options.command);
    checkReportName(options.command);
    return options;
}

Options parseJob(const std::vector<std::string>& words, const Options& general) {
    constexpr std::size_t fixedWords = 3; // port, address, type
    if (words.size() <= fixedWords)
        refuse(tr("每行需要：串口 从机地址 类型 命令"));
    std::vector<std::string> arguments{"-p", words[0], "-a", words[1], "-t", words[2]};
    arguments.insert(arguments.end(), words.begin() + fixedWords, words.end());
    Options job = parseOptions(arguments);
    const Verb verb = job.command.verb;
    if (job.action != Options::Action::run || verb == Verb::batch || verb == Verb::watch ||
        verb == Verb::ports || verb == Verb::find)
        refuse(tr("“%1”不能用在任务文件里").arg(QString::fromStdString(words[fixedWords])));
    if (!job.rate)
        job.rate = general.rate;
    return job;
}

} // namespace cli
