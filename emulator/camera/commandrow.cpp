#include "emulator/camera/commandrow.h"

#include "link/protocol/commands.h"

#include <algorithm>
#include <array>

namespace emulator {

using protocol::Command;

const VirtualCamera::CommandRow* VirtualCamera::rowOf(std::uint16_t code) {
    using Camera = VirtualCamera;
    // clang-format off
    static constexpr std::array rows = {
        CommandRow{protocol::code(Command::heartbeat),        Generation::heartbeat,   &Camera::heartbeat},
        CommandRow{protocol::code(Command::getProperty),      Generation::framesOnly,  &Camera::getProperty},
        CommandRow{protocol::code(Command::setProperty),      Generation::framesOnly,  &Camera::setProperty},
        CommandRow{protocol::code(Command::getInfo),          Generation::framesOnly,  &Camera::getInfo},
        CommandRow{protocol::code(Command::gyroTest),         Generation::framesOnly,  &Camera::gyroTest},
        CommandRow{protocol::code(Command::resetToFactory),   Generation::all,         &Camera::resetToFactory},
        CommandRow{protocol::code(Command::reboot),           Generation::all,         &Camera::reboot},
        CommandRow{protocol::code(Command::door),             Generation::all,         &Camera::door},
        CommandRow{protocol::code(Command::originCapture),    Generation::first,       &Camera::capture},
        CommandRow{protocol::code(Command::originCatalogue),  Generation::first,       &Camera::catalogue},
        CommandRow{protocol::code(Command::originDelete),     Generation::first,       &Camera::deletePictures},
        CommandRow{protocol::code(Command::originRead),       Generation::first,       &Camera::readPicture},
        CommandRow{protocol::code(Command::captureV1),        Generation::second,      &Camera::capture},
        CommandRow{protocol::code(Command::catalogueV1),      Generation::second,      &Camera::catalogue},
        CommandRow{protocol::code(Command::deleteV1),         Generation::second,      &Camera::deletePictures},
        CommandRow{protocol::code(Command::readV1),           Generation::second,      &Camera::readPicture},
        CommandRow{protocol::code(Command::appAnnounce),      Generation::firstUpload, &Camera::announceUpload},
        CommandRow{protocol::code(Command::firewareAnnounce), Generation::all,         &Camera::announceUpload},
        CommandRow{protocol::code(Command::modelAnnounce),    Generation::all,         &Camera::announceUpload},
        CommandRow{protocol::code(Command::appV1Announce),    Generation::second,      &Camera::announceAppV1},
        CommandRow{protocol::code(Command::appV1Packet),      Generation::second,      &Camera::packetV1},
        CommandRow{protocol::jsonCode,                        Generation::all,         &Camera::serveJson},
    };
    // clang-format on
    const auto* const found =
        std::find_if(rows.begin(), rows.end(), [code](const CommandRow& row) { return row.code == code; });
    return found == rows.end() ? nullptr : found;
}

} // namespace emulator
