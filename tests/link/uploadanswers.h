// Answers to uploads, with their check codes.
#pragma once

namespace uploadanswers {

inline constexpr const char* appFromZero = "AA 5A 01 1B 05 00 00 00 00 00 00 00 00 91 2E";
inline constexpr const char* appFrom512 = "AA 5A 01 1B 05 00 00 00 00 00 02 00 00 F1 40";
inline constexpr const char* appCannotFrom512 = "AA 5A 01 1B 05 00 00 00 01 00 02 00 00 A0 EA";
inline constexpr const char* appGood = "AA 5A 01 1B 01 00 00 00 00 D8 66";
inline constexpr const char* appBad = "AA 5A 01 1B 01 00 00 00 01 F9 76";
inline constexpr const char* firewareFromZero = "AA 5A 01 0B 05 00 00 00 00 00 00 00 00 07 BA";
inline constexpr const char* modelFromZero = "AA 5A 01 CB 06 00 00 00 01 00 00 00 00 00 81 38";
inline constexpr const char* modelGood = "AA 5A 01 CB 02 00 00 00 02 00 8C 3D";
inline constexpr const char* modelBad = "AA 5A 01 CB 02 00 00 00 02 01 AD 2D";
inline constexpr const char* v1HoldsAll = "AA 5A 01 1D 06 00 00 00 01 00 03 00 00 00 EB CA";
inline constexpr const char* v1FromZero = "AA 5A 01 1D 06 00 00 00 01 00 00 00 00 00 37 51";
inline constexpr const char* v1Cannot = "AA 5A 01 1D 06 00 00 00 01 01 00 00 00 00 66 FB";
inline constexpr const char* result0 = "AA 5A 01 1E 01 00 00 00 00 D9 25";
inline constexpr const char* result1 = "AA 5A 01 1E 01 00 00 00 01 F8 35";
inline constexpr const char* result2 = "AA 5A 01 1E 01 00 00 00 02 9B 05";

} // namespace uploadanswers
