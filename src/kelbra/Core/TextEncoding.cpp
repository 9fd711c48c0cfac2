#include "kelbra/Core/TextEncoding.h"

#include <array>
#include <cstdint>

namespace Kelbra::Core {

bool IsValidUtf8(std::string_view text) noexcept {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t size = text.size();
  std::size_t i = 0;
  while (i < size) {
    const unsigned char lead = bytes[i];
    if (lead < 0x80) {
      ++i;
      continue;
    }
    std::size_t length;
    unsigned char low = 0x80, high = 0xBF;  // allowed range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      if (lead == 0xE0) low = 0xA0;   // no overlong forms
      if (lead == 0xED) high = 0x9F;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      if (lead == 0xF0) low = 0x90;   // no overlong forms
      if (lead == 0xF4) high = 0x8F;  // nothing above U+10FFFF
    } else {
      return false;
    }
    if (size - i < length) return false;
    if (bytes[i + 1] < low || bytes[i + 1] > high) return false;
    for (std::size_t k = 2; k < length; ++k) {
      if ((bytes[i + k] & 0xC0) != 0x80) return false;
    }
    i += length;
  }
  return true;
}

namespace {
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> MakeDecodeTable() {
  std::array<std::int8_t, 256> table{};
  for (auto& v : table) v = -1;
  for (int i = 0; i < 64; ++i) table[static_cast<unsigned char>(kAlphabet[i])] = std::int8_t(i);
  return table;
}
constexpr auto kDecode = MakeDecodeTable();
}  // namespace

std::string EncodeBase64(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const std::uint32_t v = std::uint32_t(std::uint8_t(bytes[i])) << 16 |
                            std::uint32_t(std::uint8_t(bytes[i + 1])) << 8 |
                            std::uint8_t(bytes[i + 2]);
    out += kAlphabet[v >> 18];
    out += kAlphabet[(v >> 12) & 63];
    out += kAlphabet[(v >> 6) & 63];
    out += kAlphabet[v & 63];
  }
  const std::size_t rest = bytes.size() - i;
  if (rest > 0) {
    std::uint32_t v = std::uint32_t(std::uint8_t(bytes[i])) << 16;
    if (rest == 2) v |= std::uint32_t(std::uint8_t(bytes[i + 1])) << 8;
    out += kAlphabet[v >> 18];
    out += kAlphabet[(v >> 12) & 63];
    out += rest == 2 ? kAlphabet[(v >> 6) & 63] : '=';
    out += '=';
  }
  return out;
}

bool DecodeBase64(std::string_view text, std::string& bytes) {
  bytes.clear();
  if (text.size() % 4 != 0) return false;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const bool last = i + 4 == text.size();
    int padding = 0;
    std::uint32_t v = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      const char c = text[i + k];
      if (c == '=' && last && k >= 2) {
        ++padding;
        v <<= 6;
        continue;
      }
      if (padding > 0) return false;  // data after padding
      const std::int8_t d = kDecode[static_cast<unsigned char>(c)];
      if (d < 0) return false;
      v = v << 6 | std::uint32_t(d);
    }
    bytes += char(v >> 16);
    if (padding < 2) bytes += char((v >> 8) & 0xFF);
    if (padding < 1) bytes += char(v & 0xFF);
  }
  return true;
}

}  // namespace Kelbra::Core
