#include "language/texts.h"

#include <array>

namespace language {

namespace {

// clang-format off
constexpr auto texts = std::to_array<Text>({
    {"it does not exist", "不存在"},
    {"no permission", "没有权限"},
    {"it is a folder", "它是文件夹"},
    {"a part of the path is no folder", "路径中有一部分不是文件夹"},
    {"another program uses it", "正被别的程序使用"},
    {"the disk is full", "磁盘已满"},
    {"the disk is read-only", "磁盘只读"},
    {"the system's error %1", "系统错误 %1"},

    {"%1 is there already; choose another name with --record", "%1 已经存在，请用 --record 换一个文件名"},
    {"cannot write the recording %1: %2", "录制文件 %1 不能写入：%2"},
    {"cannot write the recording %1 any more: %2", "录制文件 %1 不能继续写入：%2"},
    {"cannot read %1: %2", "%1 不能读取：%2"},
    {"%1, %2", "录制文件 %1 不能使用，请换一个：%2"},
    {"line %1: %2", "第 %1 行：%2"},
    {"the first line of a recording is \"%1\"", "录制文件的第一行是“%1”"},
    {"the file ends in the middle of this line; take the line out", "文件在这一行中间结束，请删去这一行"},
    {"\"%1\" and its value are missing here", "这里缺少“%1”和它的值"},
    {"\"%1\" is no value for \"%2\"", "“%1”不是“%2”的值"},
    {"\"serials\" is \"kept\" or \"blanked\", not \"%1\"", "“serials”是“kept”或“blanked”，不是“%1”"},
    {"\"%1\" is no time in ms with three places", "“%1”不是三位小数的毫秒数"},
    {"the time runs back", "时间倒退"},
    {"the bytes are from \"tool\" or \"camera\", not \"%1\"", "字节来自“tool”或“camera”，不是“%1”"},
    {"\"%1\" is no byte of two hexadecimal digits", "“%1”不是两位十六进制的字节"},
    {"no bytes", "没有字节"},
    {"the first line of a profile is \"%1\"", "配置档的第一行是“%1”"},
    {"this program reads version %1 of profiles, not \"%2\"", "本程序读取版本 %1 的配置档，不能读取“%2”"},
    {"\"%1\" has no value", "“%1”没有值"},
    {"a profile begins with the key \"%1\"", "配置档以“%1”开头"},
    {"there is no key \"%1\"; known: %2", "没有项目“%1”，可用：%2"},
    {"\"%1\" stands here again", "“%1”重复出现"},
    {"\"%1\" is not a number from 0 to %2", "“%1”不是 0 到 %2 之间的数"},
    {"\"%1\" is no request; see --list-faults", "“%1”不是请求，用 --list-faults 查看"},
    {"\"%1\" is no pairs of hexadecimal digits", "“%1”不是成对的十六进制数字"},
    {"%1 words are needed, not \"%2\"", "需要 %1 个词，不是“%2”"},
    {"there is no type \"%1\"", "没有类型“%1”"},
    {"the times of \"%1\" fall", "“%1”的时间不是从小到大"},
    {"\"%1\" is neither on nor off", "“%1”不是 on 或 off"},
    {"\"%1\" has no value that can be set", "“%1”没有可设置的值"},
    {"\"%1\" needs a text behind the request", "“%1”的请求后面需要文字"},

    {"cannot open the device %1: %2", "串口 %1 打不开：%2"},
    {"%1 is not a serial device; choose another", "%1 不是串口，请换一个"},
    {"the system gives no pipe: %1", "系统不能建立管道：%1"},
    {"the system gives no pseudo-terminal: %1", "系统不能建立伪终端：%1"},
    {"Windows has no pseudo-terminals; name one port of a pair with --device", "Windows 没有伪终端，请用 --device 指定一对串口中的一个"},
    {"--link: there is no folder %1; make it or choose another", "--link：文件夹 %1 不存在，请先建立或换一个"},
    {"--link: %1 is no folder; choose another path", "--link：%1 不是文件夹，请换一个路径"},
    {"--link: cannot write to the folder %1 (%2); use sudo or choose another", "--link：文件夹 %1 不能写入（%2），请用 sudo 或换一个"},
    {"--link: %1 exists and is no link; remove it or choose another path", "--link：%1 已经存在而且不是链接，请删除它或换一个路径"},
    {"the line is gone", "线路已断开"},
    {"the line is gone: %1", "线路已断开：%1"},

    {"passing %1 on to %2 at %3 baud, recording to %4", "正在转接 %1 与 %2，波特率 %3，录制到 %4"},
    {"answering %1 requests of %2 on %3", "正在回答 %1 个请求（%2），串口 %3"},
    {"only root can open it; for another user: sudo chown USER %1", "只有 root 能打开它；要让别的用户使用：sudo chown 用户名 %1"},
    {"--pictures: cannot read the folder %1: %2", "--pictures：文件夹 %1 不能读取：%2"},

    {"--type: there is no type \"%1\"; known: %2", "--type：没有类型“%1”，可用：%2"},
    {"--line: there is no line \"%1\"; known: %2", "--line：没有线路“%1”，可用：%2"},
    {"--line: \"%1\" cannot be used; write it like %2", "--line：“%1”不能使用，请写成 %2 的样子"},
    {"--lesson: there is no lesson \"%1\"; known: %2", "--lesson：没有第“%1”课，可用：%2"},
    {"%1: \"%2\" is not a number from %3 to %4", "%1：“%2”不是 %3 到 %4 之间的数"},
    {"%1 takes no value", "%1 不带值"},
    {"%1 needs a value: %2", "%1 需要一个值：%2"},
    {"the command line cannot be read; see --help", "命令行不对，用 --help 查看用法"},
    {"unknown option \"%1\"; see --help", "没有选项“%1”，用 --help 查看用法"},
    {"%1 and %2 exclude each other", "%1 和 %2 不能同时使用"},
    {"%1 means nothing with %2; leave it out", "%1 对 %2 没有意义，请去掉"},
    {"%1 belongs to %2", "%1 只能和 %2 一起使用"},
    {"--link belongs to a new pseudo-terminal; leave it out with --device", "--link 用于新的伪终端，有 --device 时请去掉"},
    {"--tap stands between two lines; name another one for the tool", "--tap 在两条线路之间，请给工具指定另一条"},
    {"--holds-image belongs to --type sales-dynamic", "--holds-image 只能和 --type sales-dynamic 一起使用"},
    {"--baud with --replay belongs to --device", "--replay 时 --baud 只能和 --device 一起使用"},

    {"virtual-camera: a shelf camera without hardware, on a serial device", "virtual-camera：串口上的虚拟货架摄像头"},
    {"usage: virtual-camera [options]", "用法：virtual-camera [选项]"},
    {"It prints a line for everything it receives and answers. Ctrl+C ends it.", "逐行打印收到和回答的内容；按 Ctrl+C 结束。"},
    {"a camera as this profile describes it", "按这个配置档工作的摄像头"},
    {"%1; a number or a name (0)", "%1；编号或名称（0）"},
    {"slave address, 0 to 255; 0x for hexadecimal (as the type has it)", "从机地址，0 到 255，十六进制用 0x（按类型）"},
    {"rate of --device, and the one that --check-baud expects (as the type has it)", "--device 的波特率，也是 --check-baud 要求的（按类型）"},
    {"hear nothing while the tool uses another rate", "工具用别的波特率时听不到命令"},
    {"serve on this serial device (/dev/ttyUSB1, COM6) instead of a new pseudo-terminal", "使用这个串口（/dev/ttyUSB1、COM6），不建立伪终端"},
    {"keep a symbolic link to the pseudo-terminal here", "在这里保持一个指向伪终端的链接"},
    {"bytes per second in each direction (unlimited)", "每个方向每秒的字节数（不限）"},
    {"a bad line: %1, or traits (bits=1e-5,latency=20)", "不好的线路：%1，或者线路特性（bits=1e-5,latency=20）"},
    {"another line of this --line (1)", "同一种 --line 的另一条线路（1）"},
    {"picture-command offset, 0 to 255 (0)", "图片命令偏移，0 到 255（0）"},
    {"hold the JPEG files of this folder, in the order of their names", "存有这个文件夹里的 JPEG 文件，按文件名排列"},
    {"type 4: the announced application image is there already", "类型 4：要升级的应用已经在摄像头里"},
    {"kind[=parameter][@request][#occurrence]; may be repeated", "种类[=参数][@请求][#次数]，可重复"},
    {"stand between the tool and the real camera on this device, and record", "接在工具和这个串口上的真实摄像头之间并录制"},
    {"the recording of --tap (a new one in the working directory)", "--tap 的录制文件（在工作目录里新建）"},
    {"leave serial numbers out of the recording of --tap", "--tap 的录制文件里隐去序列号"},
    {"answer from this recording", "按这个录制文件回答"},
    {"--replay without the recorded delays", "--replay 时不等待录制的延时"},
    {"training, lesson N; without a number: print the lessons (in Chinese)", "训练第 N 课；没有编号：列出全部课程"},
    {"print the kinds of faults and the names of the requests", "列出故障的种类和请求的名称（英文）"},
    {"print the version", "显示版本"},
    {"print this", "显示帮助"},
});
// clang-format on

} // namespace

std::span<const Text> chineseTexts() {
    return texts;
}

} // namespace language
