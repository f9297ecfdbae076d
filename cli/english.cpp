#include "cli/english.h"

#include <QHash>
#include <QLocale>

#include <array>
#include <cstdlib>

namespace cli {

namespace {

// clang-format off
constexpr auto texts = std::to_array<EnglishText>({
    {"任务文件不能读取：%1", "The job file cannot be read: %1"},
    {"任务文件第 %1 行：%2", "Job file, line %1: %2"},
    {"任务文件里没有任务", "The job file holds no jobs"},
    {"任务会改变摄像头，请加 --yes", "The jobs change cameras; add --yes"},
    {"状态文件不能写入", "The state file cannot be written"},
    {"已做过", "done before"},
    {"没有执行", "not run"},
    {"完成", "done"},
    {"失败（%1）", "failed (%1)"},
    {"状态文件不能写入：%1", "The state file cannot be written: %1"},
    {"状态文件属于另一个任务文件：%1", "The state file belongs to another job file: %1"},
    {"状态文件已损坏：%1", "The state file is damaged: %1"},
    {"：", ": "},
    {"写入", "Write"},
    {"等待摄像头保存", "waiting for the camera to store"},
    {"写入后读回的值不同，请重试", "The value read back differs from the one written; try again"},
    {"模拟开门", "Door open"},
    {"模拟关门", "Door close"},
    {"检查", "Check-up"},
    {"结论：%1", "Verdict: %1"},
    {"重启摄像头", "Reboot"},
    {"恢复出厂设置", "Factory reset"},
    {"没有命令", "No command"},
    {"%1：“%2”不是 %3 到 %4 之间的数", "%1: \"%2\" is not a number from %3 to %4"},
    {"没有类型“%1”，可用：%2", "There is no type \"%1\"; known: %2"},
    {"波特率", "baud rate"},
    {"从机地址", "slave address"},
    {"列出串口：名称、说明、硬件标识", "List the serial ports: name, description, hardware id"},
    {"只用心跳查找摄像头：串口、波特率、从机地址", "Find cameras by heartbeat alone: port, rate, address"},
    {"要试的波特率，默认全部常用值", "Rates to try; all usual ones by default"},
    {"要试的从机地址，默认各类型的常用地址；all：0 到 255", "Addresses to try; the usual one of each type by default; all: 0 to 255"},
    {"找到第一台就结束", "End at the first camera"},
    {"测试心跳", "Test the heartbeat"},
    {"读取版本号", "Read the versions"},
    {"读取模型信息", "Read the model information"},
    {"读取安装位置：仰俯角、横滚角、偏航角、加速度", "Read the orientation: pitch, roll, yaw, acceleration"},
    {"陀螺仪自检", "Gyro test"},
    {"要写入的值，写入后读回核对；不给则只读取", "Value to write, read back afterwards; without it the setting is read"},
    {"读取或写入序列号", "Read or write the serial number"},
    {"读取或写入加热丝占空比，0 到 100", "Read or write the heater duty, 0 to 100"},
    {"读取或写入图片压缩率，0 到 100", "Read or write the picture compression, 0 to 100"},
    {"读取或写入两个抓图角度，各 0 到 255", "Read or write the two capture angles, 0 to 255 each"},
    {"读取或写入抓图方向", "Read or write the capture direction"},
    {"读取或写入陀螺仪开关", "Read or write the gyro switch"},
    {"图片编号", "picture id"},
    {"拍一张照片并下载，按类型的方式", "Take a picture and download it, by the type's way"},
    {"图片文件，默认 picture.jpg", "Picture file, picture.jpg by default"},
    {"摄像头里的图片", "Pictures in the camera"},
    {"列出图片", "List the pictures"},
    {"下载一张图片", "Download a picture"},
    {"图片文件", "Picture file"},
    {"下载全部图片", "Download all pictures"},
    {"存放图片的文件夹", "Folder for the pictures"},
    {"删除一张图片", "Delete a picture"},
    {"删除全部图片", "Delete all pictures"},
    {"升级应用、系统或模型", "Upload an application, system or model image"},
    {"app、system 或 model", "app, system or model"},
    {"固件或模型文件", "Image file"},
    {"模型名称，默认文件名", "Name of the model; the file's by default"},
    {"不等待摄像头重新启动", "Do not wait for the camera's return"},
    {"模拟开关门", "Simulate the door"},
    {"开关门：请用 open 或 close", "door: use open or close"},
    {"open 或 close", "open or close"},
    {"升级：没有“%1”，请用 app、system 或 model", "upload: there is no \"%1\"; use app, system or model"},
    {"读取全部可读的内容并判断，一份报告", "Read everything that can be read and judge it: one report"},
    {"报告文件：.html、.pdf、.json 或 .csv", "Report file: .html, .pdf, .json or .csv"},
    {"同时拍一张照片", "Take a picture as well"},
    {"执行文件里的任务，每行“PORT ADDRESS TYPE COMMAND...”，各串口并行", "Run the jobs of a file, one \"PORT ADDRESS TYPE COMMAND...\" a line, ports in parallel"},
    {"任务文件", "Job file"},
    {"任务失败后继续该串口的其余任务", "Go on with a port's jobs after one has failed"},
    {"记录已完成的任务，中断后接着做", "Note finished jobs, and continue after an interruption"},
    {"不断测试心跳和线路质量，直到 Ctrl+C", "Heartbeat and line quality until Ctrl+C"},
    {"间隔秒数，默认 1", "Interval in seconds, 1 by default"},
    {"间隔", "interval"},
    {"%1：需要 %2 个值", "%1: %2 values are needed"},
    {"%1：请用 %2 或 %3", "%1: use %2 or %3"},
    {"序列号：需要 1 到 %1 个字节", "serial number: 1 to %1 bytes"},
    {"加热丝占空比", "heater duty"},
    {"图片压缩率", "picture compression"},
    {"抓图角度", "capture angles"},
    {"抓图方向", "capture direction"},
    {"陀螺仪开关", "gyro switch"},
    {"显示帮助", "Print this help"},
    {"显示版本", "Print the version"},
    {"串口，可重复；默认唯一的串口", "Port, may be repeated; the only one by default"},
    {"波特率，默认类型的常用值", "Baud rate; the type's usual one by default"},
    {"从机地址 0 到 255，可用 0x；默认类型的常用值", "Slave address 0 to 255, 0x for hexadecimal; the type's usual one by default"},
    {"摄像头类型，编号或名称，默认 0", "Camera type by number or name, 0 by default"},
    {"每个串口输出一行 JSON", "Print one JSON object a line and port"},
    {"把线路上的字节录到新文件", "Record the bytes of the line in a new file"},
    {"不询问，直接执行会改变摄像头的命令", "Do not ask before the camera is changed"},
    {"不显示进度", "Show no progress"},
    {"在标准错误输出显示客户端的诊断行", "Print the client's diagnostic lines on standard error"},
    {"类型：%1\n退出码：0 完成，1 摄像头拒绝或结果不对，2 用法，3 串口打不开，4 没有应答，5 文件，130 中断", "Types: %1\nExit codes: 0 done, 1 camera refused or result bad, 2 usage, 3 port cannot be opened, 4 no answer, 5 file, 130 interrupted"},
    {"；用 --help 查看用法", "; see --help"},
    {"命令行不对：%1", "Wrong command line: %1"},
    {"货架摄像头的命令行工具", "Command-line tool for shelf cameras"},
    {"每行需要：串口 从机地址 类型 命令", "a line needs: port address type command"},
    {"“%1”不能用在任务文件里", "\"%1\" cannot be a job"},
    {"该类型没有图片列表，请用 capture", "This type has no picture list; use capture"},
    {"图片没有写入 %1：%2", "The picture was not written to %1: %2"},
    {"图片已写入 %1，%2 字节", "Picture written to %1, %2 bytes"},
    {"文件夹不存在或不能写入：%1", "The folder does not exist or cannot be written: %1"},
    {"图片没有下载", "The picture was not downloaded"},
    {"读取图片列表", "Read the picture list"},
    {"%1  %2 字节  时间 %3  MD5 %4", "%1  %2 bytes  time %3  MD5 %4"},
    {"摄像头里没有编号为 %1 的图片", "The camera holds no picture with id %1"},
    {"图片 %1，第 %2 张，共 %3 张", "picture %1, %2 of %3"},
    {"图片 %1 没有下载", "Picture %1 was not downloaded"},
    {"已下载 %1 张，共 %2 张", "%1 of %2 pictures downloaded"},
    {"删除图片", "Delete the picture"},
    {"图片已删除", "Deleted"},
    {"录制没有完成：%1", "The recording is not complete: %1"},
    {"没有串口，请插入转接器", "No serial port; plug in the adapter"},
    {"没有串口，请插入转接器，或用 -p 指定", "No serial port; plug in the adapter, or name it with -p"},
    {"有多个串口（%1），请用 -p 指定", "There are several ports (%1); choose with -p"},
    {"该命令会改变摄像头，请加 --yes", "This command changes the camera; add --yes"},
    {"%1：将改变 %2 台摄像头，继续吗？输入 y 继续：", "%1: changes %2 camera(s). Type y to go on: "},
    {"已取消", "Cancelled"},
    {"--record 只能用于一个串口", "--record takes one port only"},
    {"batch 的串口写在任务文件里，请去掉 -p", "The ports of batch stand in the job file; leave out -p"},
    {"%1  波特率 %2  从机地址 %3", "%1  rate %2  address %3"},
    {"没有摄像头应答，请检查电源和接线", "No camera answered; check power and wiring"},
    {"%1：第 %2 次，共 %3 次", "%1: attempt %2 of %3"},
    {"文件不存在：%1", "There is no file %1"},
    {"文件不能读取：%1", "The file cannot be read: %1"},
    {"没有读到", "unknown"},
    {"等待摄像头重新启动，第 %1 次，共 %2 次", "waiting for the camera's return, attempt %1 of %2"},
    {"升级没有完成", "Upload failed"},
    {"升级已发送", "Uploaded"},
    {"升级已发送，但摄像头没有重新启动，请检查电源后测试心跳", "Uploaded, but the camera did not return; check its power, then test the heartbeat"},
    {"升级已完成，升级前 %1", "Upload done, version before: %1"},
    {"，升级后 %1", ", after: %1"},
    {"心跳 %1 次，应答 %2 次，迟到 %3，损坏 %4，杂散字节 %5", "%1 heartbeats, %2 answered, %3 late, %4 broken, %5 stray bytes"},
    {"串口出错，请检查转接器", "The port failed; check the adapter"},
    {"串口不存在或已拔出，请插好转接器，再选择串口重试。", "The port does not exist or was pulled out; plug the adapter in and try again."},
    {"串口正被其他程序占用，请关闭占用它的程序后重试。", "Another program uses the port; close it and try again."},
    {"没有使用该串口的权限，请让管理员授权（Linux：加入 dialout 组并重新登录）后重试。", "No permission for the port; ask the administrator (Linux: join the group dialout and log in again)."},
    {"所选设备不是串口，请选择其他串口。", "The device is no serial port; choose another."},
    {"请检查转接器和所选串口后重试。", "Check the adapter and the port, then try again."},
    {"未知错误", "unknown error"},
    {"打开串口失败：", "Opening the port failed: "},
    {"操作失败：", "Failed: "},
    {"请关闭串口，重新打开后再试。", "Close the port, open it and try again."},
    {"有应答", "answered"},
    {"摄像头没有返回内容", "the camera returned nothing"},
    {"应答里没有版本号", "the answer holds no version"},
    {"应答太短", "the answer is too short"},
    {"不是 0 到 100 的百分比", "no percentage from 0 to 100"},
    {"顺时针", "clockwise"},
    {"逆时针", "anticlockwise"},
    {"开启", "on"},
    {"关闭", "off"},
    {"仰俯角", "pitch"},
    {"横滚角", "roll"},
    {"偏航角", "yaw"},
    {"加速度", "acceleration"},
    {"不支持", "not supported"},
    {"，", ", "},
    {"摄像头不能给出全部方位值", "the camera cannot tell all quantities"},
    {"通过", "passed"},
    {"没有通过", "not passed"},
    {"陀螺仪自检没有通过：%1", "the gyro test was not passed: %1"},
    {"该类型没有图片列表", "this type has no picture list"},
    {"%1 张", "%1"},
    {"心跳", "Heartbeat"},
    {"SDK版本", "SDK version"},
    {"系统版本", "System version"},
    {"QV-APP版本", "QV-APP version"},
    {"模型信息", "Model"},
    {"序列号", "Serial number"},
    {"安装位置", "Orientation"},
    {"图片列表", "Pictures"},
    {"请求 %1，应答 %2，无应答 %3，迟到 %4，损坏 %5，杂散字节 %6，最慢 %7 毫秒", "%1 requests, %2 answers, %3 unanswered, %4 late, %5 broken, %6 stray bytes, slowest %7 ms"},
    {"摄像头检查报告", "Camera check-up"},
    {"时间 %1，类型 %2，串口 %3，波特率 %4，从机地址 %5", "Time %1, type %2, port %3, rate %4, address %5"},
    {"项目", "Item"},
    {"读数", "Reading"},
    {"判断", "Verdict"},
    {"正常", "good"},
    {"异常", "odd"},
    {"失败", "failed"},
    {"时间", "Time"},
    {"串口", "Port"},
    {"原因", "Reason"},
    {"通信", "Line"},
    {"拍照", "Picture"},
    {"报告文件的扩展名必须是 .html、.pdf、.json 或 .csv", "The report's extension must be .html, .pdf, .json or .csv"},
    {"报告没有写入 %1：%2", "The report was not written to %1: %2"},
    {"已发送", "sent"},
    {"没有图片", "no pictures"},
    {"没有应答，请检查接线、从机地址和波特率", "no answer; check wiring, slave address and rate"},
    {"应答不完整或无法识别，请重试，仍然如此请检查接线", "the answer is incomplete or cannot be read; try again, then check the wiring"},
    {"摄像头拒绝执行，请检查摄像头类型和设置值", "the camera refused; check its type and the value"},
    {"串口出错，请关闭并重新打开串口", "the port failed; check the adapter"},
    {"没有打开任何串口，请关闭串口，选择串口后再打开", "no port is open; choose one"},
    {"已中断", "interrupted"},
    {"线路正忙，请稍后再试", "the line is busy; try again later"},
    {"图片无法写入，请检查工作文件夹的权限和剩余空间", "the picture cannot be written; check permissions and free space"},
    {"操作失败，请重试", "failed; try again"},
    {"文件无法打开，请重新选择文件", "the file cannot be opened"},
    {"文件无法读取，请检查文件后重新选择", "the file cannot be read"},
    {"文件达到或超过 2 GiB，无法升级，请选择其他文件", "the file has 2 GiB or more"},
    {"摄像头要求从文件末尾之后继续，请检查文件是否正确", "the camera asks for bytes behind the file's end; check the file"},
    {"文件已发送，但摄像头没有确认，请稍后测试心跳并重新升级", "sent, but the camera did not confirm; test the heartbeat and upload again"},
    {"文件已发送，但摄像头校验没有通过，请重新升级", "sent, but the camera calls the image bad; upload again"},
    {"摄像头里还没有这个文件，该类型摄像头只能确认已有的文件", "the camera does not hold this image; this type only confirms images that it holds"},
    {"线路正忙（正在%1），请稍后再试", "the line is busy (%1); try again later"},
    {"执行命令", "running a command"},
    {"读取设置", "reading settings"},
    {"下载图片", "downloading a picture"},
    {"升级", "uploading"},
    {"已发送 %1 / %2 字节", "sent %1 / %2 bytes"},
    {"，%1 KB/s，剩余 %2", ", %1 KB/s, %2 left"},
    {"（从第 %1 字节继续）", " (resumed at byte %1)"},
    {"正在读取文件…（%1%）", "reading the file (%1%)"},
    {"正在通知摄像头准备升级…", "announcing the image"},
    {"文件已发送，等待摄像头确认…", "sent, waiting for the camera's verdict"},
    {"已接收 %1 / %2 字节", "received %1 / %2 bytes"},
    {"请稍候…", "please wait"},
});
// clang-format on

#ifndef Q_OS_WIN
/// The first language that the environment names.
QString environmentLanguage() {
    for (const char* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            return value.section(QLatin1Char(':'), 0, 0);
    }
    return {};
}
#endif

} // namespace

std::span<const EnglishText> englishTexts() {
    return texts;
}

QString EnglishTexts::translate(const char*, const char* source, const char*, int) const {
    static const QHash<QString, QString> table = [] {
        QHash<QString, QString> all;
        for (const EnglishText& text : texts)
            all.insert(QString::fromUtf8(text.chinese), QString::fromUtf8(text.english));
        return all;
    }();
    return table.value(QString::fromUtf8(source));
}

bool speaksChinese() {
#ifdef Q_OS_WIN
    return QLocale::system().language() == QLocale::Chinese;
#else
    return environmentLanguage().startsWith(QLatin1String("zh"));
#endif
}

} // namespace cli
