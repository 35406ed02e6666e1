#pragma once

#include <cstdint>

// Window messages, keys and show commands as callers post them to the
// windows of another process.
namespace winmsg {
inline constexpr std::uint32_t Close = 0x0010;
inline constexpr std::uint32_t KeyDown = 0x0100;
inline constexpr std::uint32_t KeyUp = 0x0101;
inline constexpr std::uint32_t VkReturn = 0x0D;
inline constexpr std::uint32_t VkEscape = 0x1B;
inline constexpr int SwHide = 0;
inline constexpr int SwShow = 5;
inline constexpr int SwMaximize = 3;
} // namespace winmsg
