// How long the camera needs to store a setting.
#pragma once

namespace protocol {

inline constexpr int serialNumberStoreSeconds = 6;
inline constexpr int heaterStoreSeconds = 2;
inline constexpr int compressionStoreSeconds = 2;

} // namespace protocol
