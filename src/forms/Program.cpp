#include "forms/Program.h"

#include <QIcon>
#include <QTimer>
#include <exception>

#include "app/LeagueSession.h"
#include "common/Paths.h"
#include "forms/FormContext.h"
#include "forms/WindowMemory.h"
#include "forms/frmSplash.h"
#include "forms/widgets/QtUserInterface.h"
#include "platform/Platform.h"

namespace scorvane::forms {

int RunProgram(const QApplication& application, const std::function<void(frmRaces&)>& started) {
  // The format is named: to find it out, every image plugin would be loaded. Every window hands all sizes to
  // the display, so the largest, which only the desktop's menus show, is not among them.
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128})
    icon.addPixmap(QPixmap(QStringLiteral(":/scorvane/scorvane-%1.png").arg(size), "PNG"));
  QApplication::setWindowIcon(icon);
  QGuiApplication::setDesktopFileName(QStringLiteral("scorvane"));
  QtUserInterface ui;
  try {
    frmSplash splash(nullptr);
    splash.ShowSplash();
    common::ProcessState state;
    state.decimalSeparator = platform::LocaleDecimalSeparator();
    engine::DBEngine engine;
    engine.DefaultWorkspace().SetDecimalSeparator(state.decimalSeparator);
    const auto templateDb = engine.DefaultWorkspace().OpenDatabase(
        common::JoinPath(platform::ApplicationFolder(), "Kirrelon.dat"));
    app::LeagueSession session(engine, *templateDb, state, ui);
    FormContext context{engine, *templateDb, state, ui, session};
    const WindowMemory memory(*templateDb);
    frmRaces window(context);
    session.SetSimFolderPrompt([&window] { window.ShowOptions(); });
    window.show();
    const std::string file = QApplication::arguments().value(1).toStdString();
    // Once the window stands, so that what start-up asks is asked in front of it.
    QTimer::singleShot(0, &window, [&] {
      window.StartUp(file);
      if (started) started(window);
    });
    return application.exec();
  } catch (const std::exception& e) {
    // Without its template there is no program.
    ui.ShowMessage({e.what(), common::kApplicationTitle, common::MessageIcon::Critical});
    return 1;
  }
}

}  // namespace scorvane::forms
