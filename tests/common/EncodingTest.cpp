#include "common/Encoding.h"

#include <gtest/gtest.h>

namespace scorvane::common {
namespace {

TEST(Encoding, EveryByteSurvivesTheWayThereAndBack) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(ToWindows1252(FromWindows1252(all)), all);
}

TEST(Encoding, KnowsTheCodePage) {
  EXPECT_EQ(FromWindows1252("72\xB0 Ren\xE9 \x80 \x9F \xA9"), "72° René € Ÿ ©");
  EXPECT_EQ(FromWindows1252("\x81"), "\xC2\x81");
}

TEST(Encoding, APageMayHaveBeenSavedAsUtf8) {
  EXPECT_EQ(FromPageBytes("72\xB0 Ren\xE9\xAE"), "72° René®");
  const std::string marked = std::string("\xEF\xBB\xBF") + "72° René 日本 🏁";
  EXPECT_EQ(FromPageBytes(marked), marked);
  for (const char* broken :
       {"\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "é\xC3", "é\xE9"})
    EXPECT_EQ(FromPageBytes(broken), FromWindows1252(broken));
}

TEST(Encoding, WritesAQuestionMarkForWhatTheCodePageLacks) {
  EXPECT_EQ(ToWindows1252("Łukasz 日本 🏁"), "?ukasz ?? ?");
  EXPECT_EQ(ToWindows1252("a\xFF\xC3"), "a??");
  EXPECT_EQ(ToWindows1252("\xE2\x82z"), "??z");
}

}  // namespace
}  // namespace scorvane::common
