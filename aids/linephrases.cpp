#include "aids/linephrases.h"

#include <algorithm>
#include <array>

namespace {

struct Phrase {
    std::string_view english;
    std::string_view chinese;
};

// clang-format off
constexpr auto phrases = std::to_array<Phrase>({
    // requests
    {"heartbeat", "心跳"},
    {"read application version", "读取 SDK 版本"},
    {"read system version", "读取系统版本"},
    {"read serial number", "读取序列号"},
    {"read property", "读取属性"},
    {"write serial number", "设置序列号"},
    {"write property", "设置属性"},
    {"reset to factory settings", "恢复出厂设置"},
    {"reboot", "重启"},
    {"gyro test", "陀螺仪测试"},
    {"read SDK version", "读取 QV-APP 版本"},
    {"read model information", "读取模型信息"},
    {"read information", "读取信息"},
    {"door simulation", "模拟开关门"},
    {"capture a picture", "拍照"},
    {"list the pictures", "图片列表"},
    {"delete pictures", "删除图片"},
    {"read a picture", "下载图片"},
    {"capture a picture (V1)", "拍照（动销）"},
    {"list the pictures (V1)", "图片列表（动销）"},
    {"delete pictures (V1)", "删除图片（动销）"},
    {"read a picture (V1)", "下载图片（动销）"},
    {"announce application image", "App 固件升级请求"},
    {"announce system image", "系统固件升级请求"},
    {"announce model", "模型升级请求"},
    {"announce application image (second protocol)", "App 固件升级请求（第二协议）"},
    {"upload packet (second protocol)", "升级数据包（第二协议）"},
    {"JSON property query", "JSON 属性查询"},
    {"JSON picture piece", "JSON 图片分段"},
    {"JSON request", "JSON 请求"},
    {"unknown command", "未知命令"},
    // frames
    {"answer to: %1", "应答：%1"},
    {"%1 (%2), address %3, %4, check code right", "%1（%2），地址 %3，%4，校验正确"},
    {"%1 (%2), address %3, %4, check code WRONG", "%1（%2），地址 %3，%4，校验错误"},
    {"%1: %2", "%1：%2"},
    {"%1 payload byte", "数据 %1 字节"},
    {"%1 payload bytes", "数据 %1 字节"},
    {"damaged frame with an impossible length: %1", "长度不可能的坏帧：%1"},
    {"too short for this command", "比该命令的应答短"},
    {"JSON answer", "JSON 应答"},
    {"%1, %2, check code right: %3", "%1，%2，校验正确：%3"},
    {"%1, %2, check code WRONG: %3", "%1，%2，校验错误：%3"},
    {"%1 body byte", "内容 %1 字节"},
    {"%1 body bytes", "内容 %1 字节"},
    {"%1 and %2", "%1，另有%2"},
    {"%1 bytes outside any frame: %2", "帧外 %1 字节：%2"},
    {"upload data, %1 of %2 bytes", "升级数据 %1 / %2 字节"},
    {"upload data, %1 of %2 bytes, broken off", "升级数据 %1 / %2 字节，没有发完"},
    {"broken off after %1 bytes: %2", "收到 %1 字节后中断：%2"},
    {"%1 ... (%2 bytes)", "%1 …（共 %2 字节）"},
    // fields
    {"success", "成功"},
    {"refused with result %1", "拒绝，结果 %1"},
    {"id %1, %2", "编号 %1，%2"},
    {", value %1", "，值 %1"},
    {"%1 picture", "%1 张图片"},
    {"%1 pictures", "%1 张图片"},
    {"; id %1, %2 bytes", "；编号 %1，%2 字节"},
    {"%1, %2", "%1，%2"},
    {"%1 picture byte", "图片 %1 字节"},
    {"%1 picture bytes", "图片 %1 字节"},
    {", rest %1", "，其余 %1"},
    {"ready", "可以开始"},
    {"not ready, status %1", "不能开始，状态 %1"},
    {", type %1", "，类型 %1"},
    {", to go on from byte %1", "，从第 %1 字节继续"},
    {"verdict: %1", "校验结果：%1"},
    {"no payload", "没有数据"},
    {"the camera is there", "摄像头在线"},
    {"not the answer of a heartbeat", "不是心跳的应答"},
    {"payload %1", "数据 %1"},
    {"%1 bytes", "%1 字节"},
    {" named \"%1\"", "，名称“%1”"},
    {"id %1, %2 bytes", "编号 %1，%2 字节"},
    // rows
    {"no answer to: ", "没有应答："},
    {"no longer in memory", "内容已不在内存"},
    {"bytes that came faster than they were decoded", "数据过快，部分字节没有解读"},
});
// clang-format on

} // namespace

std::string_view chinesePhrase(std::string_view english) {
    const auto* const found = std::find_if(phrases.begin(), phrases.end(), [english](const Phrase& phrase) {
        return phrase.english == english;
    });
    return found == phrases.end() ? english : found->chinese;
}
