#include "MrpModel/MrpEnumText.h"

#include <array>

namespace Mrp {

namespace {

using CodeText = std::array<char, 21>;

constexpr CodeText textOf(std::uint64_t code) {
  CodeText text{};
  char digits[20];
  std::size_t count = 0;
  do {
    digits[count++] = static_cast<char>('0' + code % 10);
    code /= 10;
  } while (code != 0);
  for (std::size_t i = 0; i < count; ++i) text[i] = digits[count - 1 - i];
  return text;
}

// Every enumeration here is a byte on the wire or in the store.
constexpr std::array<CodeText, 256> kByteTexts = [] {
  std::array<CodeText, 256> texts{};
  for (std::size_t code = 0; code < texts.size(); ++code) texts[code] = textOf(code);
  return texts;
}();

}  // namespace

const char* mrpCodeText(std::uint64_t code) {
  if (code < kByteTexts.size()) return kByteTexts[code].data();
  thread_local CodeText text;
  text = textOf(code);
  return text.data();
}

}  // namespace Mrp
