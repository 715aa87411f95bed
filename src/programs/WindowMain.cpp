// scorvane: the window.
#include <fmt/format.h>

#include <QApplication>
#include <QIcon>
#include <QTimer>
#include <exception>

#include "app/LeagueSession.h"
#include "common/Paths.h"
#include "forms/FormContext.h"
#include "forms/frmRaces.h"
#include "forms/frmSplash.h"
#include "forms/widgets/QtUserInterface.h"
#include "platform/Platform.h"

namespace {

using namespace scorvane;

int Run(const QApplication& application) {
  forms::QtUserInterface ui;
  try {
    forms::frmSplash splash(nullptr);
    splash.ShowSplash();
    common::ProcessState state;
    state.decimalSeparator = platform::LocaleDecimalSeparator();
    engine::DBEngine engine;
    engine.DefaultWorkspace().SetDecimalSeparator(state.decimalSeparator);
    const auto templateDb = engine.DefaultWorkspace().OpenDatabase(
        common::JoinPath(platform::ApplicationFolder(), "Kirrelon.dat"));
    app::LeagueSession session(engine, *templateDb, state, ui);
    forms::FormContext context{engine, *templateDb, state, ui, session};
    forms::frmRaces window(context);
    session.SetSimFolderPrompt([&window] { window.ShowOptions(); });
    window.show();
    const QStringList arguments = QApplication::arguments();
    const std::string file = arguments.value(1).toStdString();
    // Once the window stands, so that what start-up asks is asked in front of it.
    QTimer::singleShot(0, &window, [&window, file] { window.StartUp(file); });
    return application.exec();
  } catch (const std::exception& e) {
    // Without its template there is no program.
    ui.ShowMessage({e.what(), common::kApplicationTitle, common::MessageIcon::Critical});
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256})
    icon.addFile(QStringLiteral(":/scorvane/scorvane-%1.png").arg(size));
  QApplication::setWindowIcon(icon);
  QGuiApplication::setDesktopFileName(QStringLiteral("scorvane"));
  return Run(application);
}
