#include "programs/jet/JetFile.h"

#include <algorithm>
#include <utility>

#include "common/Encoding.h"

namespace scorvane::jet {
namespace {

constexpr std::size_t kVersionPlace = 20;
constexpr std::uint8_t kDataPage = 1;
constexpr std::uint8_t kUsagePage = 5;
constexpr std::uint32_t kRowPlace = 0x1FFF;
// A row that has gone, or has moved away: where it moved to, it is found.
constexpr std::uint32_t kNoRowHere = 0x4000;
constexpr std::size_t kLongest = 64U << 20U;  // bytes of a long value

void AppendUtf8(std::string& text, char32_t c) {
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0U | c >> 6U);
    text += static_cast<char>(0x80U | (c & 0x3FU));
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0U | c >> 12U);
    text += static_cast<char>(0x80U | (c >> 6U & 0x3FU));
    text += static_cast<char>(0x80U | (c & 0x3FU));
  } else {
    text += static_cast<char>(0xF0U | c >> 18U);
    text += static_cast<char>(0x80U | (c >> 12U & 0x3FU));
    text += static_cast<char>(0x80U | (c >> 6U & 0x3FU));
    text += static_cast<char>(0x80U | (c & 0x3FU));
  }
}

std::string FromUtf16(const std::u16string& wide) {
  std::string text;
  for (std::size_t i = 0; i < wide.size(); ++i) {
    char32_t c = wide[i];
    if (c >= 0xD800 && c < 0xE000) {
      const char32_t next = i + 1 < wide.size() ? wide[i + 1] : 0;
      const bool pair = c < 0xDC00 && next >= 0xDC00 && next < 0xE000;
      c = pair ? 0x10000 + ((c - 0xD800) << 10U) + (next - 0xDC00) : 0xFFFD;
      if (pair) ++i;
    }
    AppendUtf8(text, c);
  }
  return text;
}

}  // namespace

std::uint32_t Number(Bytes bytes, std::size_t place, std::size_t size) {
  const Bytes part = Part(bytes, place, size);
  std::uint32_t number = 0;
  for (std::size_t i = part.size(); i-- > 0;) number = number << 8U | part[i];
  return number;
}

Bytes Part(Bytes bytes, std::size_t place, std::size_t size) {
  if (place > bytes.size() || size > bytes.size() - place) throw Damaged();
  return bytes.substr(place, size);
}

JetFile::JetFile(Buffer content) : content_(std::move(content)) {
  const std::uint32_t version = Number(content_, kVersionPlace, 1);
  if (version > 1) throw Damaged();
  version3_ = version == 0;
  pageSize_ = version3_ ? 2048 : 4096;
}

Bytes JetFile::Page(std::uint32_t number) const {
  return Part(content_, number * pageSize_, pageSize_);
}

Bytes JetFile::Row(std::uint32_t page, std::uint32_t row) const {
  const Bytes bytes = Page(page);
  if (row >= Number(bytes, RowCountPlace(), 2)) throw Damaged();
  const std::size_t place = RowCountPlace() + 2 + row * 2;
  const std::size_t begin = Number(bytes, place, 2) & kRowPlace;
  const std::size_t end = row == 0 ? bytes.size() : Number(bytes, place - 2, 2) & kRowPlace;
  if (begin > end) throw Damaged();
  return Part(bytes, begin, end - begin);
}

// The map is a row of its own: the pages from one on, a bit each, or the pages that hold such bits.
std::vector<std::uint32_t> JetFile::PagesOf(std::uint32_t usage) const {
  const Bytes map = Row(usage >> 8U, usage & 0xFFU);
  const auto count = static_cast<std::uint32_t>(content_.size() / pageSize_);
  std::vector<std::uint32_t> pages;
  const auto addBits = [&](Bytes bits, std::size_t first) {
    for (std::size_t i = 0; i < bits.size() * 8 && first + i < count; ++i)
      if ((bits[i / 8] >> (i % 8) & 1U) != 0) pages.push_back(static_cast<std::uint32_t>(first + i));
  };
  if (Number(map, 0, 1) == 0) {
    const std::size_t first = Number(map, 1, 4);
    addBits(map.substr(5), first);
    return pages;
  }
  const std::size_t perPage = (pageSize_ - 4) * 8;
  for (std::size_t i = 0; 1 + i * 4 + 4 <= map.size(); ++i) {
    const std::uint32_t page = Number(map, 1 + i * 4, 4);
    if (page == 0) continue;
    const Bytes bits = Page(page);
    if (bits[0] != kUsagePage) throw Damaged();
    addBits(bits.substr(4), i * perPage);
  }
  return pages;
}

void JetFile::ForEachRow(std::uint32_t table, std::uint32_t usage,
                         const std::function<void(Bytes)>& visit) const {
  for (const std::uint32_t number : PagesOf(usage)) {
    const Bytes page = Page(number);
    if (page[0] != kDataPage || Number(page, 4, 4) != table) continue;
    const std::uint32_t rows = Number(page, RowCountPlace(), 2);
    for (std::uint32_t row = 0; row < rows; ++row)
      if ((Number(page, RowCountPlace() + 2 + row * 2, 2) & kNoRowHere) == 0) visit(Row(number, row));
  }
}

Buffer JetFile::LongValue(Bytes field) const {
  constexpr std::uint32_t kInside = 0x80;
  constexpr std::uint32_t kOneRow = 0x40;
  const std::size_t size = Number(field, 0, 3);
  const std::uint32_t kind = Number(field, 3, 1);
  if (kind == kInside) return Buffer(field.substr(std::min<std::size_t>(field.size(), 12)).substr(0, size));
  std::uint32_t next = Number(field, 4, 4);
  if (kind == kOneRow) return Buffer(Row(next >> 8U, next & 0xFFU).substr(0, size));
  if (kind != 0) throw Damaged();
  // A chain of rows; a ring of them ends with the size.
  Buffer value;
  while (next != 0 && value.size() < size) {
    const Bytes row = Row(next >> 8U, next & 0xFFU);
    next = Number(row, 0, 4);
    if (row.size() == 4 || value.size() > kLongest) throw Damaged();
    value += row.substr(4);
  }
  value.resize(std::min(value.size(), size));
  return value;
}

std::string JetFile::Text(Bytes text) const {
  if (version3_) return common::FromWindows1252({reinterpret_cast<const char*>(text.data()), text.size()});
  std::u16string wide;
  const bool compressed = text.size() >= 2 && text[0] == 0xFF && text[1] == 0xFE;
  bool narrow = compressed;
  for (std::size_t i = compressed ? 2 : 0; i < text.size();) {
    if (compressed && text[i] == 0) {
      // From here on the other way.
      narrow = !narrow;
      ++i;
    } else if (narrow) {
      wide += static_cast<char16_t>(text[i++]);
    } else {
      if (i + 1 >= text.size()) break;
      wide += static_cast<char16_t>(text[i] | text[i + 1] << 8U);
      i += 2;
    }
  }
  return FromUtf16(wide);
}

}  // namespace scorvane::jet
