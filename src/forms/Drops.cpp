#include "forms/Drops.h"

#include <QFileInfo>
#include <QMimeData>
#include <QUrl>
#include <algorithm>
#include <array>
#include <string_view>

#include "app/NewLeague.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr std::array<std::string_view, 3> kResultExtensions = {"stn", "html", "htm"};

}  // namespace

std::string DraggedLeague(const QMimeData* data) {
  const QList<QUrl> urls = data->urls();
  if (urls.size() != 1 || !urls.constFirst().isLocalFile()) return {};
  const std::string path = PathUtf8(urls.constFirst().toLocalFile());
  return common::LowerCase(common::GetExtension(path)) == app::kLeagueExtension ? path : std::string();
}

std::vector<std::string> DraggedResults(const QMimeData* data) {
  std::vector<std::string> paths;
  for (const QUrl& url : data->urls()) {
    if (!url.isLocalFile()) continue;
    const std::string path = PathUtf8(url.toLocalFile());
    const std::string extension = common::LowerCase(common::GetExtension(path));
    if (std::find(kResultExtensions.begin(), kResultExtensions.end(), extension) != kResultExtensions.end() ||
        QFileInfo(url.toLocalFile()).isDir())
      paths.push_back(path);
  }
  return paths;
}

}  // namespace scorvane::forms
