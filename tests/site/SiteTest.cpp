// The site's parts that no page shows by themselves; whole sites are read back in tests/programs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/RuleError.h"
#include "site/Colors.h"
#include "site/Folder.h"
#include "site/Hash.h"
#include "site/Names.h"
#include "site/Pages.h"
#include "site/SiteSettings.h"
#include "site/Theme.h"

namespace scorvane::site {
namespace {

using common::RuleError;

TEST(SiteNames, EveryServerTakesThem) {
  EXPECT_EQ(Slug("  Dale O'Hara, Jr. "), "dale-ohara-jr");
  EXPECT_EQ(Slug("José Ñúñez Łódź Straße"), "jose-nunez-lodz-strase");
  EXPECT_EQ(Slug("عبد"), "");
  EXPECT_EQ(Slug("\xC3"), "") << "half a character";
  EXPECT_EQ(Slug("../..\\"), "");
  EXPECT_LE(Slug(std::string(500, 'w')).size(), 60U);
  EXPECT_EQ(NumberedSlug(12, "عبد"), "12");
  EXPECT_EQ(NumberedSlug(3, "Pocono"), "3-pocono");
}

TEST(SiteFolder, OnlyPathsBelowItAreTheSites) {
  for (const char* path : {"index.html", "races/12-pocono.html", "data/races/1.json", "assets/a_b.png"})
    EXPECT_TRUE(IsSitePath(path)) << path;
  for (const char* path : {"", "/etc/passwd", "../x", "races/../../x", "races//x", "a\\b", ".hidden",
                           "races/.x", "races/", "C:x", "A.html", "x y"})
    EXPECT_FALSE(IsSitePath(path)) << path;
}

TEST(SiteHash, TellsContentsApart) {
  Hash parts;
  parts.Add("12345678");
  parts.Add("9");
  EXPECT_EQ(parts.Digits(), HashOf("123456789"));
  EXPECT_NE(HashOf(""), HashOf(std::string(1, '\0')));
  EXPECT_NE(HashOf("12345678"), HashOf("87654321"));
  Hash one;
  one.AddText("a");
  one.AddText("bc");
  Hash other;
  other.AddText("ab");
  other.AddText("c");
  EXPECT_NE(one.Digits(), other.Digits());
}

TEST(SiteColors, AreReadableOnEachOther) {
  const Color white{255, 255, 255};
  const Color black{0, 0, 0};
  EXPECT_NEAR(Contrast(white, black), 21, 0.01);
  EXPECT_EQ(Readable(black, white), black) << "what can be read stays";
  for (const Color paper : {white, black, Color{0, 255, 0}, Color{128, 128, 128}, Color{255, 0, 0}})
    for (const Color ink : {white, black, Color{0, 255, 0}, Color{128, 128, 128}, paper})
      EXPECT_GE(Contrast(Readable(ink, paper), paper), 4.5) << ColorName(ink) << " on " << ColorName(paper);
  EXPECT_EQ(ColorName(ColorOf(0x0000FF)), "#ff0000") << "red is in the low byte";
  EXPECT_EQ(ColorOf(std::string("#c8102e")), (Color{0xC8, 0x10, 0x2E}));
}

TEST(SiteSettings, TakeWhatCanBeMeant) {
  EXPECT_EQ(CleanBaseUrl(" https://league.example/a "), "https://league.example/a/");
  EXPECT_EQ(CleanBaseUrl(" "), "");
  for (const char* url : {"league.example", "ftp://x/", "https://", "https:///x", "https://x/?a",
                          "https://x/#a", "javascript://x", "https://x/a b", "https://x/\"><script>"})
    EXPECT_THROW(CleanBaseUrl(url), RuleError) << url;
  EXPECT_EQ(CleanAccent("C8102E"), "#c8102e");
  for (const char* color : {"red", "#12345", "#12345g", "#1234567", "#fff;x"})
    EXPECT_THROW(CleanAccent(color), RuleError) << color;
  const std::string png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x40\0\0\0\x20", 24);
  EXPECT_EQ(LogoExtension(png), ".png");
  EXPECT_EQ(LogoSize(png).width, 64);
  EXPECT_EQ(LogoSize(png).height, 32);
  EXPECT_EQ(LogoSize("\xFF\xD8\xFF\xE0").width, 0) << "cut off";
  EXPECT_THROW(CheckLogo("<svg onload=alert(1)>"), RuleError);
}

TEST(SitePages, LongListsGoOverSeveralPages) {
  EXPECT_EQ(PagesFor(0, 500), 1U);
  EXPECT_EQ(PagesFor(500, 500), 1U);
  EXPECT_EQ(PagesFor(501, 500), 2U);
  EXPECT_EQ(PagePath("races", 0), "races.html");
  EXPECT_EQ(PagePath("races", 2), "races-3.html");
}

TEST(SiteTheme, OwnThemesAreThereAndFillTheirTemplates) {
  const std::string folder = SCORVANE_SOURCE_DIR "/share/themes";
  EXPECT_THAT(ListThemes(folder), testing::ElementsAre("classic", "paddock"));
  Theme theme("Paddock", folder);
  View view;
  view["pageheading"] = "<b>\x01";
  EXPECT_THAT(theme.Render("races", view), testing::HasSubstr("No race has been run yet."));
  EXPECT_THAT(theme.Render("race", view), testing::HasSubstr("<bdi>&lt;b&gt;\xEF\xBF\xBD</bdi>"));
  EXPECT_THROW(theme.Render("nonesuch", view), RuleError);
  EXPECT_THROW(Theme("", SCORVANE_SOURCE_DIR "/src"), RuleError);
}

}  // namespace
}  // namespace scorvane::site
