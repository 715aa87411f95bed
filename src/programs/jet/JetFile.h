// Database files of the old format, versions 3 and 4: their pages, rows and long values, only read. For
// systems without the library that does this elsewhere. Nothing in such a file is believed: whatever does not
// fit throws Damaged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace scorvane::jet {

struct Damaged : std::runtime_error {
  Damaged() : std::runtime_error("The file is damaged.") {}
};

using Bytes = std::basic_string_view<std::uint8_t>;
using Buffer = std::basic_string<std::uint8_t>;

// A number of the file, its lowest byte first.
std::uint32_t Number(Bytes bytes, std::size_t place, std::size_t size);
// `size` bytes from a place on.
Bytes Part(Bytes bytes, std::size_t place, std::size_t size);

class JetFile {
 public:
  // Takes the whole file. Throws Damaged when it is of neither version.
  explicit JetFile(Buffer content);

  bool IsVersion3() const { return version3_; }
  Bytes Page(std::uint32_t number) const;
  // A row of a page of rows, whatever its marks say.
  Bytes Row(std::uint32_t page, std::uint32_t row) const;
  // The rows of a table's pages that are there, in their order. `usage` points at the map of these pages, the
  // row in its lowest byte.
  void ForEachRow(std::uint32_t table, std::uint32_t usage, const std::function<void(Bytes)>& visit) const;
  // What a field of a memo or an object stands for.
  Buffer LongValue(Bytes field) const;
  // A text as the file keeps it, in UTF-8.
  std::string Text(Bytes text) const;

 private:
  std::vector<std::uint32_t> PagesOf(std::uint32_t usage) const;
  std::size_t RowCountPlace() const { return version3_ ? 8 : 12; }

  Buffer content_;
  bool version3_ = false;
  std::size_t pageSize_ = 0;
};

}  // namespace scorvane::jet
