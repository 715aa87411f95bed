// Watches the folder of the open league's result files while the window is there, and offers what is new in a
// bar above the races.
#pragma once

#include <QFileSystemWatcher>
#include <QFrame>
#include <QLabel>
#include <QThreadPool>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/WatchFolder.h"
#include "forms/FormContext.h"

namespace scorvane::forms {

class WatchBar : public QFrame {
 public:
  using Import = std::function<void(const std::vector<std::string>& paths)>;
  WatchBar(FormContext& context, Import import, QWidget* parent);
  ~WatchBar() override;

  // To be called when a league, or none, has been opened.
  void LeagueOpened();
  // To be called when its folder may be another: then begins anew, and offers all that lies there.
  void FolderChosen();
  // To be called when the league's races may be others; `ids` are what they are now.
  void ShowsRaces(const std::vector<std::int32_t>& ids);

 private:
  void Begin(app::WatchChoice choice);
  // The folder is looked into on a thread of its own: on a network that may take as long as it likes.
  void Look();
  void Found(const std::optional<std::vector<app::FolderFile>>& files);
  void LookAgain(int milliseconds);
  void Offer();
  void NotNow();

  FormContext& context_;
  app::WatchChoice choice_;
  std::string league_;  // whose choice it is
  app::FolderLooks looks_;
  int round_ = 0;  // of Begin; what an earlier one asked for comes too late
  bool looking_ = false;
  std::vector<std::int32_t> races_;
  std::vector<std::string> compared_;  // the files that the league was last compared with
  std::vector<std::string> offered_;
  QFileSystemWatcher watcher_;
  QTimer timer_;
  QThreadPool* threads_;
  QLabel* lblFiles_;
};

}  // namespace scorvane::forms
