#include "engine/Collation.h"

#include <sqlite3.h>
#include <unicode/ucol.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace scorvane::engine {
namespace {

class Collator {
 public:
  Collator() {
    UErrorCode status = U_ZERO_ERROR;
    collator_.reset(ucol_open("", &status));
    if (U_FAILURE(status) || !collator_)
      throw std::runtime_error("The system's collation data cannot be loaded.");
    ucol_setStrength(collator_.get(), UCOL_SECONDARY);
    RankAscii();
  }

  int Compare(std::string_view a, std::string_view b) const {
    // Printable ASCII compares by rank alone; the first character that is anything else hands over to the
    // collator, and so does one that follows a difference, for it might be an accent of the character before.
    const std::size_t shared = std::min(a.size(), b.size());
    std::size_t i = 0;
    for (; i < shared; ++i) {
      const int left = RankOf(a, i);
      const int right = RankOf(b, i);
      if (left == 0 || right == 0) return Full(a, b);
      if (left != right) {
        if (!PlainAt(a, i + 1) || !PlainAt(b, i + 1)) return Full(a, b);
        return left < right ? -1 : 1;
      }
    }
    if (!PlainAt(a, i) || !PlainAt(b, i)) return Full(a, b);
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
  }

  std::string Version() const {
    UVersionInfo version;
    char text[U_MAX_VERSION_STRING_LENGTH];
    ucol_getVersion(collator_.get(), version);
    u_versionToString(version, text);
    return text;
  }

 private:
  struct Close {
    void operator()(UCollator* collator) const { ucol_close(collator); }
  };

  int Full(std::string_view a, std::string_view b) const {
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult result =
        ucol_strcollUTF8(collator_.get(), a.data(), static_cast<int32_t>(a.size()), b.data(),
                         static_cast<int32_t>(b.size()), &status);
    return U_FAILURE(status) ? a.compare(b) : static_cast<int>(result);
  }

  int RankOf(std::string_view text, std::size_t i) const {
    return ranks_[static_cast<unsigned char>(text[i])];
  }
  bool PlainAt(std::string_view text, std::size_t i) const {
    return i >= text.size() || RankOf(text, i) != 0;
  }

  // Asks the collator for the order of the printable ASCII characters; equal ones (a and A) share a rank.
  void RankAscii() {
    std::vector<char> order;
    for (int c = ' '; c < 127; ++c) order.push_back(static_cast<char>(c));
    auto compare = [&](char a, char b) { return Full({&a, 1}, {&b, 1}); };
    std::sort(order.begin(), order.end(), [&](char a, char b) { return compare(a, b) < 0; });
    int rank = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
      if (i == 0 || compare(order[i - 1], order[i]) != 0) ++rank;
      ranks_[static_cast<unsigned char>(order[i])] = static_cast<std::uint8_t>(rank);
    }
  }

  std::unique_ptr<UCollator, Close> collator_;
  std::array<std::uint8_t, 256> ranks_{};  // 0: not printable ASCII
};

const Collator& TheCollator() {
  static const Collator collator;
  return collator;
}

int CompareForStore(void*, int aSize, const void* a, int bSize, const void* b) {
  return CompareTexts({static_cast<const char*>(a), static_cast<std::size_t>(aSize)},
                      {static_cast<const char*>(b), static_cast<std::size_t>(bSize)});
}

}  // namespace

int CompareTexts(std::string_view a, std::string_view b) {
  return TheCollator().Compare(a, b);
}

std::string CollationVersion() {
  return TheCollator().Version();
}

void RegisterCollation(sqlite3* connection) {
  TheCollator();
  sqlite3_create_collation_v2(connection, kCollationName, SQLITE_UTF8, nullptr, CompareForStore, nullptr);
}

}  // namespace scorvane::engine
