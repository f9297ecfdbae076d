#include "service/reportwords.h"

#include <QCoreApplication>

namespace {

QString translatedWords(const char* text) {
    return QCoreApplication::translate("ReportWords", text);
}

const char* words(CommandEnd end) {
    switch (end) {
    case CommandEnd::done:
        return "完成";
    case CommandEnd::sent:
        return "已发送";
    case CommandEnd::empty:
        return "摄像头没有返回内容";
    case CommandEnd::noPictures:
        return "没有图片";
    case CommandEnd::noAnswer:
        return "没有应答，请检查接线、从机地址和波特率";
    case CommandEnd::unusable:
        return "应答不完整或无法识别，请重试，仍然如此请检查接线";
    case CommandEnd::refused:
        return "摄像头拒绝执行，请检查摄像头类型和设置值";
    case CommandEnd::portFailed:
        return "串口出错，请关闭并重新打开串口";
    case CommandEnd::portNotOpen:
        return "没有打开任何串口，请关闭串口，选择串口后再打开";
    case CommandEnd::stopped:
        return "已中断";
    case CommandEnd::lineBusy:
        return "线路正忙，请稍后再试";
    case CommandEnd::fileUnusable:
        return "图片无法写入，请检查工作文件夹的权限和剩余空间";
    case CommandEnd::failed:
        return "操作失败，请重试";
    case CommandEnd::fileMissing:
        return "文件无法打开，请重新选择文件";
    case CommandEnd::fileUnreadable:
        return "文件无法读取，请检查文件后重新选择";
    case CommandEnd::fileTooLarge:
        return "文件达到或超过 2 GiB，无法升级，请选择其他文件";
    case CommandEnd::offsetBeyondFile:
        return "摄像头要求从文件末尾之后继续，请检查文件是否正确";
    case CommandEnd::noVerdict:
        return "文件已发送，但摄像头没有确认，请稍后测试心跳并重新升级";
    case CommandEnd::verdictBad:
        return "文件已发送，但摄像头校验没有通过，请重新升级";
    case CommandEnd::writtenShort:
        return "串口没有发完全部数据，请检查转接器和接线，稍后重新升级";
    case CommandEnd::dataNotSupported:
        return "摄像头里还没有这个文件，该类型摄像头只能确认已有的文件";
    }
    return "";
}

} // namespace

QString reportWords(const CommandReport& report) {
    if (report.end == CommandEnd::lineBusy && report.busyWith != LineUser::none)
        return translatedWords("线路正忙（正在%1），请稍后再试").arg(lineUserWords(report.busyWith));
    return translatedWords(words(report.end));
}

QString lineUserWords(LineUser user) {
    switch (user) {
    case LineUser::none:
        return {};
    case LineUser::command:
        return translatedWords("执行命令");
    case LineUser::reading:
        return translatedWords("读取设置");
    case LineUser::versions:
        return translatedWords("读取版本号");
    case LineUser::download:
        return translatedWords("下载图片");
    case LineUser::upload:
        return translatedWords("升级");
    }
    return {};
}
