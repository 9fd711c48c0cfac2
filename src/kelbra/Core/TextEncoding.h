/// \file
/// Small text utilities of the platform: UTF-8 validation and base64.
#pragma once

#include <string>
#include <string_view>

namespace Kelbra::Core {

/// True when `text` is well-formed UTF-8 (no overlong forms, no surrogates, nothing above
/// U+10FFFF).
bool IsValidUtf8(std::string_view text) noexcept;

/// Standard base64 (RFC 4648) with padding.
std::string EncodeBase64(std::string_view bytes);
/// Decodes standard padded base64; returns false (leaving `bytes` unspecified) on malformed input.
bool DecodeBase64(std::string_view text, std::string& bytes);

}  // namespace Kelbra::Core
