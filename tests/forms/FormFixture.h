// A session with a league file for dialogs to work on, and the hands that work them.
#pragma once

#include <QApplication>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "app/Backup.h"
#include "app/Commands.h"
#include "app/ImportFiles.h"
#include "common/ScriptedUserInterface.h"
#include "db/LeagueFixture.h"
#include "forms/FormContext.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {

class FormFixture : public test::LeagueFixture {
 protected:
  FormFixture() : session_(engine_, *template_, state_, ui_) {
    qputenv("SCORVANE_HOME", QByteArray::fromStdString(folder_.Path().string()));
    app::SaveBackupOptions(*template_, {{}, 0});
  }
  ~FormFixture() override { qunsetenv("SCORVANE_HOME"); }

  // Makes a league and opens it.
  engine::Database& OpenLeague(std::int16_t simType, std::int16_t leagueType = common::kOnline,
                               std::int16_t droppedRaces = 0, std::int16_t lapMethod = common::kLapSpeed) {
    const std::string path = folder_.File("open.lgx");
    db::CreateLeagueFile(engine_, path, simType, leagueType, *template_, droppedRaces, lapMethod);
    EXPECT_TRUE(session_.OpenLeagueFile(path));
    return session_.League();
  }

  // Only the window in front takes mnemonics.
  static void Show(QWidget& form) {
    form.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
  }

  template <typename Widget>
  static Widget& Find(QWidget& form, const char* name) {
    auto* found = form.findChild<Widget*>(QString::fromLatin1(name));
    if (found == nullptr) throw std::runtime_error(std::string("no control ") + name);
    return *found;
  }
  static QPushButton& Button(QWidget& form, int index) {
    return Find<QPushButton>(form, ("cmdButton_" + std::to_string(index)).c_str());
  }
  static void Click(QWidget& form, int index) { QTest::mouseClick(&Button(form, index), Qt::LeftButton); }

  // A button that is pressed by its letter goes down and, a moment later, up.
  static void PressMnemonic(QWidget& form, Qt::Key key) {
    QTest::keyClick(&form, key, Qt::AltModifier);
    QTest::qWait(150);
  }

  // Files and folders dropped on a window, as the desktop does it; whether it would have them.
  static bool Drop(QWidget& window, const std::vector<std::string>& paths) {
    QMimeData data;
    QList<QUrl> urls;
    for (const std::string& path : paths) urls << QUrl::fromLocalFile(Q(path));
    data.setUrls(urls);
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    QApplication::processEvents();
    return true;
  }

  // Works the modal dialog that the next step opens. A dialog that is never answered is closed, and the test
  // fails.
  static void OnModal(std::function<void(QWidget&)> work) {
    QTimer::singleShot(0, qApp, [work = std::move(work)] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr) << "no dialog came up";
      work(*dialog);
      if (QApplication::activeModalWidget() == dialog) {
        ADD_FAILURE() << "the dialog " << dialog->objectName().toStdString() << " is still there";
        dialog->close();
      }
    });
  }

  static std::vector<std::string> SeasonFiles() {
    std::vector<std::string> files;
    for (const auto& entry :
         std::filesystem::directory_iterator(SCORVANE_SOURCE_DIR "/share/samples/season-1998"))
      if (entry.path().extension() == ".stn") files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
  }

  // The season as races of the open league.
  void ImportSeason() {
    app::PrepareImport(session_.League(), *template_, state_);
    const app::StagedFiles staged =
        app::StageFiles(session_.League(), state_, ui_, SeasonFiles(), {common::kLapSpeed, true});
    ASSERT_EQ(staged.files.size(), 33U);
    app::Import(session_, ui_, staged.files.size());
  }

  // What was done to the open league, newest first.
  std::vector<std::string> DoneChanges() {
    std::vector<std::string> labels;
    for (const engine::LoggedChange& change : history::List(session_.League()))
      if (!change.undone) labels.push_back(change.label);
    return labels;
  }

  common::ProcessState state_;
  common::ScriptedUserInterface ui_;
  app::LeagueSession session_;
  FormContext context_{engine_, *template_, state_, ui_, session_};
};

}  // namespace scorvane::forms
