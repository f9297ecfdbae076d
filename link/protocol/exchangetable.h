// The exchange rules: one row per request, in the columns of docs/protocol.md.
#pragma once

#include "link/protocol/commands.h"

#include <array>
#include <optional>
#include <string_view>

namespace protocol {

/// Method of reading the answer.
enum class Reading : std::uint8_t {
    none,   ///< no read
    once,   ///< one read of readSize bytes; the bytes received are the answer
    frame,  ///< up to `tries` reads of readSize bytes, until they are exactly one frame
    json,   ///< the same with the JSON envelope
    blocks, ///< reads of readSize bytes until the wanted count is complete; no limit on the number of reads
};

/// Log of the request frame before it is sent.
enum class RequestLog : std::uint8_t {
    none,
    sdata, ///< "sdata:" and the value, a line per byte
    infos, ///< "infos:" and the value, a line per byte
    cert,  ///< "cert:" and the value, a line per byte
    every, ///< "every:" and the value in hexadecimal, a line per byte; the log stays hexadecimal
};

/// Values of the columns below.
inline constexpr std::nullopt_t kept = std::nullopt; ///< timeouts stay as the previous command set them
inline constexpr bool discard = true;                ///< discards received input first
inline constexpr bool flush = true;                  ///< flushes pending output before the request
inline constexpr bool no = false;

struct ExchangeRule {
    std::string_view name;
    Command command;
    std::optional<std::uint32_t> timeoutMs; ///< read and write timeout constant, or `kept`
    bool discardInput;
    bool flushOutput;
    Reading reading;
    std::uint32_t readSize; ///< bytes
    std::int32_t tries;
    RequestLog requestLog = RequestLog::none;
    bool logsWriteCount = false;         ///< "serialDataLength:" right after the write
    std::uint32_t pauseAfterWriteMs = 0; ///< between the request and the first read
};

namespace rules {
using enum Reading;

// clang-format off
// name                                command                    T ms   discard  flush  reading size  tries
inline constexpr ExchangeRule testHeartBeat
    {"testHeartBeat",                  Command::heartbeat,        200,   discard, flush, once,    100,    1};
inline constexpr ExchangeRule getSn
    {"getSn",                          Command::getProperty,       50,   no,      flush, frame,   100,   10};
inline constexpr ExchangeRule setSn
    {"setSn",                          Command::setProperty,       50,   no,      flush, frame,   100,   10};
inline constexpr ExchangeRule resetToFactory
    {"resetToFactory",                 Command::resetToFactory,    50,   no,      flush, frame,   100,   10};
inline constexpr ExchangeRule rebootCamera
    {"rebootCamera",                   Command::reboot,            50,   no,      flush, frame,   100,   10};
inline constexpr ExchangeRule setCommonProperty
    {"setCommonProperty",              Command::callers,           50,   no,      flush, frame,   100,   10};
inline constexpr ExchangeRule getCommonProperty
    {"getCommonProperty",              Command::callers,           50,   no,      no,    frame,   100,   10, RequestLog::none, true};
inline constexpr ExchangeRule getCommonPropertyWithoutParse // T and size are the caller's
    {"getCommonPropertyWithoutParse",  Command::callers,            0,   no,      no,    once,      0,    1, RequestLog::none, true};
inline constexpr ExchangeRule getPropertyValue
    {"getPropertyValue",               Command::callers,           50,   no,      no,    frame,    15,    4, RequestLog::none, true};
inline constexpr ExchangeRule getQvVersion
    {"getQvVersion",                   Command::getInfo,           50,   no,      no,    frame,    15,    5};
inline constexpr ExchangeRule getModelInfo
    {"getModelInfo",                   Command::getInfo,           50,   no,      no,    frame,    15,   10};
inline constexpr ExchangeRule opDoor
    {"opDoor",                         Command::door,              50,   no,      flush, none,      0,    0};
inline constexpr ExchangeRule originCapture
    {"originCapture",                  Command::originCapture,   1000,   no,      flush, frame,   512,   10};
inline constexpr ExchangeRule getOriginPicInfos
    {"getOriginPicInfos",              Command::originCatalogue,   50,   no,      flush, frame,  1024,   10};
inline constexpr ExchangeRule delOriginPic
    {"delOriginPic",                   Command::originDelete,    kept,   no,      flush, frame,   512,   10};
inline constexpr ExchangeRule captureV1
    {"captureV1",                      Command::captureV1,       kept,   no,      flush, frame,   512,   10, RequestLog::none, false, 500};
inline constexpr ExchangeRule delPicV1
    {"delPicV1",                       Command::deleteV1,        kept,   no,      flush, frame,   512,   10};
inline constexpr ExchangeRule getOriginTargetPic
    {"getOriginTargetPic",             Command::originRead,      kept,   no,      flush, blocks,  512,    0, RequestLog::sdata};
inline constexpr ExchangeRule getTargetPicV1
    {"getTargetPicV1",                 Command::readV1,          kept,   no,      flush, blocks,  512,    0, RequestLog::sdata};
inline constexpr ExchangeRule getPicInfosV1
    {"getPicInfosV1",                  Command::catalogueV1,     1000,   discard, flush, frame,  1024,   50};
inline constexpr ExchangeRule takePicDelete // the first exchange of takePic sets the timeouts of all five
    {"takePic delete",                 Command::originDelete,    1000,   no,      flush, frame,   512,   10};
inline constexpr ExchangeRule takePicCapture
    {"takePic capture",                Command::originCapture,   kept,   no,      flush, frame,   100,   10};
inline constexpr ExchangeRule takePicCatalogue
    {"takePic catalogue",              Command::originCatalogue, kept,   no,      flush, frame,  1024,   10, RequestLog::infos};
inline constexpr ExchangeRule takePicRead
    {"takePic read",                   Command::originRead,      kept,   no,      flush, blocks,  512,    0, RequestLog::sdata};
inline constexpr ExchangeRule takePicDeleteAgain
    {"takePic delete again",           Command::originDelete,    kept,   no,      flush, frame,   512,   10};
inline constexpr ExchangeRule quentaProperty
    {"getQuentaModbusProperty",        Command::json,              50,   no,      flush, json,   1000,   10};
inline constexpr ExchangeRule quentaFirstChunk
    {"getQuentaModbusPic first chunk", Command::json,              50,   no,      flush, json,   1000,   50};
inline constexpr ExchangeRule quentaLaterChunk
    {"getQuentaModbusPic later chunk", Command::json,            kept,   no,      flush, json,   1000, 5000};
inline constexpr ExchangeRule appUpdate
    {"appUpdate",                      Command::appAnnounce,     1000,   no,      flush, frame,    15,   10, RequestLog::every};
inline constexpr ExchangeRule firewareUpdate
    {"firewareUpdate",                 Command::firewareAnnounce,1000,   no,      flush, frame,    15,   10, RequestLog::cert};
inline constexpr ExchangeRule modelUpdate
    {"modelUpdate",                    Command::modelAnnounce,   1000,   no,      flush, frame,    15,   10, RequestLog::every};
inline constexpr ExchangeRule appUpdateV1Announce // timeouts are set once, before all five
    {"appUpdateV1 announcement",       Command::appV1Announce,   kept,   no,      flush, frame,    15,   10};
inline constexpr ExchangeRule appUpdateV1Closing
    {"appUpdateV1 closing packet",     Command::appV1Packet,     kept,   no,      flush, frame,    15,   30};
// clang-format on

/// Reads of an upload's verdict: 15 bytes each, tries by kind.
inline constexpr std::uint32_t verdictReadSize = 15;
inline constexpr std::int32_t appVerdictTries = 10;
inline constexpr std::int32_t modelVerdictTries = 30;

/// Every row, in table order.
inline constexpr std::array all{
    &testHeartBeat,
    &getSn,
    &setSn,
    &resetToFactory,
    &rebootCamera,
    &setCommonProperty,
    &getCommonProperty,
    &getCommonPropertyWithoutParse,
    &getPropertyValue,
    &getQvVersion,
    &getModelInfo,
    &opDoor,
    &originCapture,
    &getOriginPicInfos,
    &delOriginPic,
    &captureV1,
    &delPicV1,
    &getOriginTargetPic,
    &getTargetPicV1,
    &getPicInfosV1,
    &takePicDelete,
    &takePicCapture,
    &takePicCatalogue,
    &takePicRead,
    &takePicDeleteAgain,
    &quentaProperty,
    &quentaFirstChunk,
    &quentaLaterChunk,
    &appUpdate,
    &firewareUpdate,
    &modelUpdate,
    &appUpdateV1Announce,
    &appUpdateV1Closing,
};

} // namespace rules

/// Timeouts outside the table.
inline constexpr std::uint32_t appV1ReadTimeoutMs = 200;
inline constexpr std::uint32_t appV1WriteTimeoutMs = 2000;
inline constexpr std::uint32_t appV1AnnounceTimeoutMs = 1000;
inline constexpr std::uint32_t namedPortTimeoutMs = 50; ///< until the first command; port given by name
inline constexpr std::uint32_t onlyPortTimeoutMs =
    5000; ///< until the first command; port picked by the client

} // namespace protocol
