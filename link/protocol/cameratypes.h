// The types of cameras: one table for the client, the windows and the virtual camera.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace protocol {

enum class CameraType : std::uint32_t {
    ostra = 0,
    dorvel = 1,
    salesStatic = 2,
    quenta = 3,
    salesDynamic = 4
};

/// Picture commands of a camera. V1 cameras also take application images by the second protocol.
enum class PictureCommands : std::uint8_t { origin, v1, json };

struct CameraTypeInfo {
    CameraType type;
    std::string_view name;       ///< shown to technicians, UTF-8
    std::string_view optionName; ///< on command lines
    std::uint8_t usualAddress;
    std::uint32_t baudRate;
    PictureCommands pictures;
};

/// In the order of their numbers.
inline constexpr std::array cameraTypes{
    CameraTypeInfo{CameraType::ostra, "Ostra", "ostra", 1, 460800, PictureCommands::origin},
    CameraTypeInfo{CameraType::dorvel, "Dorvel", "dorvel", 0xEE, 460800, PictureCommands::origin},
    CameraTypeInfo{CameraType::salesStatic, "动销-静态", "sales-static", 1, 460800, PictureCommands::origin},
    CameraTypeInfo{CameraType::quenta, "Quenta静态", "quenta", 3, 230400, PictureCommands::json},
    CameraTypeInfo{CameraType::salesDynamic, "动销-动态", "sales-dynamic", 2, 460800, PictureCommands::v1},
};

/// The first type for an unknown number.
[[nodiscard]] constexpr const CameraTypeInfo& cameraTypeInfo(std::uint32_t number) {
    return number < cameraTypes.size() ? cameraTypes[number] : cameraTypes.front();
}
[[nodiscard]] constexpr const CameraTypeInfo& infoOf(CameraType type) {
    return cameraTypeInfo(static_cast<std::uint32_t>(type));
}
static_assert(infoOf(CameraType::salesDynamic).type == CameraType::salesDynamic);

/// Baud rates of cameras of any type, the usual one first.
inline constexpr std::array<std::uint32_t, 4> baudRates{460800, 230400, 115200, 9600};

} // namespace protocol
