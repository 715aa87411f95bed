#include "forms/frmPublish.h"

#include <fmt/format.h>

#include <QDir>
#include <QFormLayout>
#include <QPixmap>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "app/PublishSite.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "drivers/Roster.h"
#include "forms/Undoing.h"
#include "forms/frmPickDrivers.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Filters.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "site/Theme.h"

namespace scorvane::forms {
namespace {

enum Button { kPublish, kOpen, kClose };
constexpr std::int32_t kFirstAccent =
    0xA4570B;  // of the pages when the league has chosen none; red in the low byte
constexpr int kBoxCharacters = 40;

QPushButton* SmallButton(const char* name, const QString& caption, const QString& toolTip, QWidget* parent) {
  auto* button = new QPushButton(caption, parent);
  button->setObjectName(QString::fromLatin1(name));
  button->setToolTip(toolTip);
  button->setAutoDefault(false);
  return button;
}

// "#0b57a4" and a colour with red in its low byte.
std::int32_t ColorOf(const std::string& accent) {
  const QColor color(Q(accent));
  return color.red() | color.green() << 8 | color.blue() << 16;
}

std::string AccentOf(std::int32_t color) {
  return fmt::format("#{:02x}{:02x}{:02x}", color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF);
}

}  // namespace

frmPublish::frmPublish(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmPublish"));
  setWindowTitle(tr("Publish Site"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(BuildFields());
  lblOutcome_ = new QLabel(this);
  lblOutcome_->setObjectName(QStringLiteral("lblOutcome"));
  lblOutcome_->setTextFormat(Qt::PlainText);
  lblOutcome_->setWordWrap(true);
  lblOutcome_->setMinimumHeight(lblOutcome_->fontMetrics().lineSpacing() * 2);
  lblOutcome_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  layout->addWidget(lblOutcome_, 1);
  buttons_ = AddButtons(layout, this,
                        {{kPublish, tr("&Publish"), tr("Write the pages that have changed into the folder")},
                         {kOpen, tr("&Open"), tr("Show the site's front page in the browser")},
                         {kClose, tr("Close"), tr("Close this dialog")}});
  buttons_[kPublish]->setDefault(true);
  connect(buttons_[kPublish], &QPushButton::clicked, this, &frmPublish::Publish);
  connect(buttons_[kOpen], &QPushButton::clicked, this, &frmPublish::OpenSite);
  connect(buttons_[kClose], &QPushButton::clicked, this, &QDialog::reject);
  Load();
}

QWidget* frmPublish::BuildFields() {
  auto* fields = new QWidget(this);
  auto* form = new QFormLayout(fields);
  form->setContentsMargins(0, 0, 0, 0);
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  const auto add = [&](const QString& caption, QWidget* field, const std::vector<QWidget*>& beside) {
    auto* label = new QLabel(caption, fields);
    label->setBuddy(field);
    auto* row = new QHBoxLayout;
    row->addWidget(field, 1);
    for (QWidget* widget : beside) row->addWidget(widget);
    form->addRow(label, row);
  };
  txtFolder_ = new EntryBox(QStringLiteral("txtFolder"), fields);
  txtFolder_->setAccessibleName(tr("Folder of the site"));
  txtFolder_->setMinimumWidth(txtFolder_->fontMetrics().averageCharWidth() * kBoxCharacters);
  auto* folder = SmallButton("cmdFolder", tr("&Browse..."),
                             tr("Choose the folder that the site is written into"), fields);
  add(tr("&Folder:"), txtFolder_, {folder});
  cboTheme_ = new QComboBox(fields);
  cboTheme_->setObjectName(QStringLiteral("cboTheme"));
  cboTheme_->setAccessibleName(tr("Theme"));
  cboTheme_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  auto* theme = SmallButton("cmdTheme", tr("T&heme Folder..."), tr("Take a theme of your own"), fields);
  add(tr("&Theme:"), cboTheme_, {theme});
  txtBaseUrl_ = new EntryBox(QStringLiteral("txtBaseUrl"), fields);
  txtBaseUrl_->setAccessibleName(tr("Address of the site"));
  txtBaseUrl_->setPlaceholderText(QStringLiteral("https://league.example/season/"));
  txtBaseUrl_->setToolTip(
      tr("Where the site will be read, if that is known; links in chats and search engines need it"));
  add(tr("&Address:"), txtBaseUrl_, {});
  chkAccent_ = new QCheckBox(tr("Own a&ccent color"), fields);
  chkAccent_->setObjectName(QStringLiteral("chkAccent"));
  chkAccent_->setToolTip(tr("For links and headings, instead of the theme's"));
  lblAccent_ = new ColorSquare(QStringLiteral("lblAccent"), tr("Accent color"), context_.ui, fields);
  auto* accent = new QHBoxLayout;
  accent->addWidget(chkAccent_);
  accent->addWidget(lblAccent_);
  accent->addStretch();
  form->addRow(QString(), accent);
  auto* logo = SmallButton("cmdLogo", tr("&Logo..."),
                           tr("Choose a picture: PNG, JPEG, GIF or WebP, 200 kB at most"), fields);
  lblLogo_ = new QLabel(fields);
  lblLogo_->setObjectName(QStringLiteral("lblLogo"));
  lblLogo_->setTextFormat(Qt::PlainText);
  cmdNoLogo_ = SmallButton("cmdNoLogo", tr("&No Logo"), tr("Publish without a logo"), fields);
  auto* picture = new QHBoxLayout;
  picture->addWidget(lblLogo_);
  picture->addStretch();
  picture->addWidget(logo);
  picture->addWidget(cmdNoLogo_);
  auto* lblCaption = new QLabel(tr("Logo:"), fields);
  lblCaption->setBuddy(lblLogo_);
  form->addRow(lblCaption, picture);
  auto* drivers = SmallButton("cmdChart", tr("&Drivers..."),
                              tr("Choose whose points are drawn race by race, at most 20"), fields);
  cmdFirstTen_ =
      SmallButton("cmdFirstTen", tr("F&irst Ten"), tr("Draw the first ten of the championship"), fields);
  lblChart_ = new QLabel(fields);
  lblChart_->setObjectName(QStringLiteral("lblChart"));
  lblChart_->setTextFormat(Qt::PlainText);
  auto* chart = new QHBoxLayout;
  chart->addWidget(lblChart_);
  chart->addStretch();
  chart->addWidget(drivers);
  chart->addWidget(cmdFirstTen_);
  auto* lblPointsChart = new QLabel(tr("Points chart:"), fields);
  lblPointsChart->setBuddy(drivers);
  form->addRow(lblPointsChart, chart);
  connect(drivers, &QPushButton::clicked, this, &frmPublish::ChooseDrivers);
  connect(cmdFirstTen_, &QPushButton::clicked, this, [this] {
    chart_.clear();
    ShowChart();
  });

  connect(txtFolder_, &QLineEdit::textChanged, this, &frmPublish::UpdateButtons);
  connect(chkAccent_, &QCheckBox::toggled, lblAccent_, &QWidget::setEnabled);
  connect(folder, &QPushButton::clicked, this, &frmPublish::BrowseFolder);
  connect(theme, &QPushButton::clicked, this, &frmPublish::BrowseTheme);
  connect(logo, &QPushButton::clicked, this, &frmPublish::BrowseLogo);
  connect(cmdNoLogo_, &QPushButton::clicked, this, [this] {
    logo_.clear();
    ShowLogo();
  });
  return fields;
}

void frmPublish::Load() {
  const site::SiteSettings settings = site::ReadSiteSettings(context_.session.League());
  const std::string league = context_.session.League().Name();
  for (const std::string& theme : site::ListThemes(site::ThemesFolder()))
    cboTheme_->addItem(Q(theme), Q(theme));
  ShowTheme(settings.theme.empty() ? site::kDefaultTheme : settings.theme);
  // Beside the league, where one finds it again.
  txtFolder_->setText(Q(settings.folder.empty()
                            ? common::GetFolder(league) + common::GetFileTitle(league, true) + "-site"
                            : settings.folder));
  txtBaseUrl_->setText(Q(settings.baseUrl));
  chkAccent_->setChecked(!settings.accent.empty());
  lblAccent_->setEnabled(chkAccent_->isChecked());
  lblAccent_->SetColor(settings.accent.empty() ? kFirstAccent : ColorOf(settings.accent));
  logo_ = settings.logo;
  ShowLogo();
  chart_ = site::ChartedDrivers(settings.chart);
  ShowChart();
  UpdateButtons();
  txtFolder_->setFocus();
}

void frmPublish::ShowTheme(const std::string& theme) {
  int index = cboTheme_->findData(Q(theme), Qt::UserRole, Qt::MatchFixedString);
  if (index < 0) {
    cboTheme_->addItem(Q(theme), Q(theme));
    index = cboTheme_->count() - 1;
    cboTheme_->setItemData(index, Q(theme).toHtmlEscaped(), Qt::ToolTipRole);
  }
  cboTheme_->setCurrentIndex(index);
}

void frmPublish::ShowLogo() {
  cmdNoLogo_->setEnabled(!logo_.empty());
  lblLogo_->setPixmap({});
  QPixmap picture;
  if (logo_.empty()) {
    lblLogo_->setText(tr("none"));
  } else if (picture.loadFromData(reinterpret_cast<const uchar*>(logo_.data()),
                                  static_cast<uint>(logo_.size()))) {
    const int height = fontMetrics().height() * 3;
    const qreal ratio = devicePixelRatioF();
    picture =
        picture.scaled(QSize(height * 4, height) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    picture.setDevicePixelRatio(ratio);
    lblLogo_->setPixmap(picture);
  } else {
    // Browsers know kinds that this desktop does not.
    lblLogo_->setText(Q(fmt::format("{} bytes ({})", logo_.size(), site::LogoExtension(logo_).substr(1))));
  }
  lblLogo_->setAccessibleName(logo_.empty() ? tr("No logo") : tr("The logo"));
}

void frmPublish::BrowseFolder() {
  const std::string chosen = context_.ui.PickFolder("Folder of the Site", Utf8(txtFolder_->text()));
  if (!chosen.empty()) txtFolder_->setText(Q(chosen));
}

void frmPublish::BrowseTheme() {
  const std::string chosen =
      context_.ui.PickFolder("Theme Folder", Utf8(cboTheme_->currentData().toString()));
  if (chosen.empty()) return;
  // Said now, and not when everything else has been filled in.
  Guarded(context_.ui, [&] {
    const site::Theme theme(chosen, site::ThemesFolder());
    ShowTheme(chosen);
  });
}

void frmPublish::BrowseLogo() {
  common::FileRequest request;
  request.title = "Logo";
  request.filter = kLogoFilter;
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (chosen.empty()) return;
  Guarded(context_.ui, [&] {
    logo_ = app::ReadLogo(chosen.front());
    ShowLogo();
  });
}

void frmPublish::ChooseDrivers() {
  Guarded(context_.ui, [&] {
    std::map<std::int32_t, QString> now;
    for (const std::int32_t driver : chart_) now[driver] = tr("drawn now");
    frmPickDrivers picker(context_, tr("Drivers in the Chart"), now, this);
    if (picker.exec() != QDialog::Accepted) return;
    site::ChartText(picker.Ticked());  // too many are refused now
    chart_ = picker.Ticked();
    ShowChart();
  });
}

void frmPublish::ShowChart() {
  QStringList names;
  for (const drivers::Driver& driver : drivers::ListDrivers(context_.session.League()))
    if (std::find(chart_.begin(), chart_.end(), driver.id) != chart_.end()) names << Q(driver.name);
  if (names.isEmpty() && cmdFirstTen_->hasFocus()) txtFolder_->setFocus();
  cmdFirstTen_->setEnabled(!names.isEmpty());
  lblChart_->setText(names.isEmpty()     ? tr("the first ten")
                     : names.size() == 1 ? Shortened(Utf8(names.first()), kBoxCharacters)
                                         : tr("%1 drivers").arg(names.size()));
  lblChart_->setToolTip(ToolTipText(names.join(QLatin1Char('\n'))));
}

void frmPublish::UpdateButtons() {
  const std::string folder(common::TrimBlanks(Utf8(txtFolder_->text())));
  // A path that is no whole one lies beside the league: a window has no folder that one is in.
  front_ = folder.empty() ? std::string()
                          : Utf8(QDir(Q(common::GetFolder(context_.session.League().Name())))
                                     .absoluteFilePath(Q(common::JoinPath(folder, "index.html"))));
  const bool there = !front_.empty() && common::FileExists(front_);
  if (!there && buttons_[kOpen]->hasFocus()) buttons_[kPublish]->setFocus();
  buttons_[kPublish]->setEnabled(!folder.empty());
  buttons_[kOpen]->setEnabled(there);
}

site::SiteSettings frmPublish::Settings() const {
  site::SiteSettings before = site::ReadSiteSettings(context_.session.League());
  app::SiteChoices choices;
  choices.folder = common::GetFolder(front_);
  // Without a theme the league takes the default, whichever that will be.
  const std::string theme = Utf8(cboTheme_->currentData().toString());
  if (!before.theme.empty() || theme != site::kDefaultTheme) choices.theme = theme;
  choices.baseUrl = Utf8(txtBaseUrl_->text());
  choices.accent = chkAccent_->isChecked() ? AccentOf(lblAccent_->Color()) : std::string();
  choices.chart = chart_;
  site::SiteSettings settings = app::WithChoices(std::move(before), choices);
  settings.logo = logo_;
  return settings;
}

void frmPublish::Publish() {
  lblOutcome_->clear();
  Guarded(context_.ui, [&] {
    const site::SiteSettings settings = Settings();
    const WaitCursor wait;
    const site::PublishOutcome outcome = app::PublishSite(context_.session, context_.ui, settings);
    txtFolder_->setText(Q(settings.folder));
    txtBaseUrl_->setText(Q(settings.baseUrl));
    lblOutcome_->setText(Q(app::OutcomeText(outcome)));
  });
  UpdateButtons();
  // One wants to see what came out; Enter opens it.
  if (!lblOutcome_->text().isEmpty()) buttons_[kOpen]->setFocus();
}

void frmPublish::OpenSite() {
  if (!context_.ui.ShellOpen(front_))
    context_.ui.ShowMessage({"\"" + front_ + "\" cannot be opened in a browser.", "Publish Site",
                             common::MessageIcon::Exclamation});
}

}  // namespace scorvane::forms
