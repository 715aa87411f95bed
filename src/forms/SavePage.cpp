#include "forms/SavePage.h"

#include "common/Formats.h"
#include "common/Paths.h"
#include "forms/widgets/Guard.h"

namespace scorvane::forms {
namespace {

// "daytona" becomes "daytona.htm": a page without the extension opens in no browser.
std::string WithPageExtension(const std::string& path) {
  const std::string extension = common::LowerCase(common::GetExtension(common::GetFileTitle(path)));
  return extension == "htm" || extension == "html" ? path : path + ".htm";
}

}  // namespace

void SavePage(FormContext& context, const reports::PageSubject& subject, const reports::PageTexts& texts,
              const common::FileRequest& request) {
  const std::string chosen = context.ui.SaveFile(request);
  if (chosen.empty()) return;
  const std::string path = WithPageExtension(chosen);
  const common::Message question{"The file \"" + path + "\" already exists!  Overwrite it?", "File Exists",
                                 common::MessageIcon::None};
  if (common::FileExists(path) && context.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes)
    return;
  engine::Database& league = context.session.League();
  const WaitCursor wait;
  if (!reports::WritePage(league, context.templateDb, context.state, subject, texts,
                          reports::ReadPageLook(league), reports::StandingsFooter(), path)) {
    context.ui.ShowMessage(
        {"Error creating HTML file...", common::kApplicationTitle, common::MessageIcon::None});
  }
}

}  // namespace scorvane::forms
