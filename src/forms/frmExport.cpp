#include "forms/frmExport.h"

#include <QFocusEvent>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <filesystem>

#include "app/Commands.h"
#include "common/Paths.h"
#include "engine/Value.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Filters.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "platform/Platform.h"

namespace scorvane::forms {
namespace {

constexpr int kHeadingColor = 5;
constexpr int kReportNameColor = 6;
constexpr int kCaptionColor = 7;
constexpr int kFirstTableColor = 8;
constexpr int kDefaultRows = 1;
constexpr int kAlternateRows = 2;
constexpr int kUnusedColor = 17;
constexpr int kWidest = 100;

// Pages break lines at CR LF; the boxes hold bare line feeds.
std::string PageText(const QPlainTextEdit* box) {
  return Utf8(box->toPlainText().replace(QLatin1Char('\n'), QStringLiteral("\r\n")));
}

void SetPageText(QPlainTextEdit* box, const std::string& text) {
  box->setPlainText(Q(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
  box->selectAll();
}

int LayoutValue(const QLineEdit* box) {
  return static_cast<int>(
      engine::RoundHalfEven(std::clamp<double>(engine::LeadingNumber(Utf8(box->text())), 0, kWidest)));
}

// A box of several lines that selects all of its text when the keyboard comes to it, as the boxes of one line
// do.
class PageTextBox : public QPlainTextEdit {
 public:
  using QPlainTextEdit::QPlainTextEdit;

 protected:
  void focusInEvent(QFocusEvent* event) override {
    QPlainTextEdit::focusInEvent(event);
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason) return;
    // After the mouse press that brought the focus has set the cursor.
    QTimer::singleShot(0, this, &QPlainTextEdit::selectAll);
  }
};

}  // namespace

frmExport::frmExport(FormContext& context, reports::PageSubject subject, QWidget* parent)
    : QDialog(parent), context_(context), subject_(subject) {
  setObjectName(QStringLiteral("frmExport"));
  setWindowTitle(tr("Export as HTML"));
  auto* tabs = new QTabWidget(this);
  tabs->setAccessibleName(tr("Parts of the page"));
  tabs->setObjectName(QStringLiteral("ts"));
  tabs->addTab(BuildTextTab(), tr("Text"));
  tabs->addTab(BuildTableTab(), tr("Table"));
  tabs->addTab(BuildPageTab(), tr("Page"));
  tabs->setTabToolTip(0, tr("Text Properties"));
  tabs->setTabToolTip(1, tr("Table Properties"));
  tabs->setTabToolTip(2, tr("Page Properties"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs);
  auto* preview = new QPushButton(tr("&Preview"), this);
  preview->setObjectName(QStringLiteral("cmdPreview"));
  preview->setAutoDefault(false);
  const auto buttons = AddButtons(layout, this, {{0, tr("&Export")}, {1, tr("Cancel")}});
  static_cast<QHBoxLayout*>(layout->itemAt(layout->count() - 1)->layout())->insertWidget(0, preview);
  buttons.at(0)->setDefault(true);
  buttons.at(0)->setToolTip(
      tr("A file name that ends in .xlsx or .csv makes a spreadsheet instead of a page."));
  connect(preview, &QPushButton::clicked, this, &frmExport::Preview);
  connect(buttons.at(0), &QPushButton::clicked, this, &frmExport::Export);
  connect(buttons.at(1), &QPushButton::clicked, this, &QDialog::reject);
  Load();
}

ColorSquare* frmExport::Square(int index, const QString& name) {
  auto* square = new ColorSquare(QStringLiteral("lblColor_%1").arg(index), name, context_.ui, this);
  lblColor_[static_cast<std::size_t>(index)] = square;
  return square;
}

QPlainTextEdit* frmExport::TextBox(const char* name, const QString& label) {
  auto* box = new PageTextBox(this);
  box->setObjectName(QString::fromLatin1(name));
  box->setAccessibleName(label);
  box->setTabChangesFocus(true);
  box->setFixedHeight(box->fontMetrics().height() * 3 + 12);
  box->setMinimumWidth(box->fontMetrics().averageCharWidth() * 50);
  return box;
}

QWidget* frmExport::BuildTextTab() {
  auto* page = new QWidget(this);
  auto* grid = new QGridLayout(page);
  struct Line {
    QPlainTextEdit** box;
    const char* name;
    QString caption;
    int color;
    QString colorName;
  };
  const Line lines[] = {
      {&txtHeading_, "txtHeading", tr("Page &Heading:"), kHeadingColor, tr("Color for Page Heading:")},
      {&txtRepName_, "txtRepName", tr("Report &Name:"), kReportNameColor, tr("Color for Report Name:")},
      {&txtCaption_, "txtCaption", tr("Table &Caption:"), kCaptionColor, tr("Color for Table Caption:")}};
  int row = 0;
  for (const Line& line : lines) {
    auto* label = new QLabel(line.caption, page);
    *line.box = TextBox(line.name, QString(line.caption).remove(QLatin1Char('&')));
    label->setBuddy(*line.box);
    grid->addWidget(label, row++, 0, 1, 2);
    grid->addWidget(*line.box, row++, 0, 1, 2);
    auto* colors = new QHBoxLayout;
    auto* colorLabel = new QLabel(line.colorName, page);
    ColorSquare* square = Square(line.color, line.colorName);
    colorLabel->setBuddy(square);
    colors->addWidget(colorLabel);
    colors->addWidget(square);
    colors->addStretch();
    grid->addLayout(colors, row++, 0, 1, 2);
  }
  grid->setRowStretch(row, 1);
  return page;
}

QWidget* frmExport::BuildTableTab() {
  auto* page = new QWidget(this);
  auto* layoutBox = new QGroupBox(tr("Layout"), page);
  auto* form = new QFormLayout(layoutBox);
  const QString captions[] = {tr("Border Size:"), tr("Cell Padding:"), tr("Cell Spacing:")};
  for (std::size_t i = 0; i < txtLayout_.size(); ++i) {
    auto* box = new EntryBox(QStringLiteral("txtLayout_%1").arg(i), EntryBox::Digits(), layoutBox);
    box->setToolTip(tr("Integer between 0 and 100"));
    box->setMaxLength(5);
    box->setMaximumWidth(box->fontMetrics().averageCharWidth() * 10);
    box->setAccessibleName(captions[i]);
    connect(box, &EntryBox::Left, this, [this, i] { LeaveLayoutBox(i); });
    form->addRow(captions[i], box);
    txtLayout_[i] = box;
  }
  auto* colorBox = new QGroupBox(tr("Colors"), page);
  auto* grid = new QGridLayout(colorBox);
  const QString switches[] = {tr("Header row colors:"), tr("Default row colors:"),
                              tr("Alternate Row Colors:"), tr("Border"), tr("Table Background:")};
  const QString names[] = {tr("Text:"),       tr("Background:"), tr("Text:"), tr("Background:"), tr("Text:"),
                           tr("Background:"), tr("Light:"),      tr("Dark:"), tr("Background:"), QString()};
  for (int k = 0; k < static_cast<int>(chkRowColors_.size()); ++k) {
    auto* check = new QCheckBox(switches[k], colorBox);
    check->setObjectName(QStringLiteral("chkRowColors_%1").arg(k));
    connect(check, &QCheckBox::toggled, this, [this] { ApplyRules(); });
    chkRowColors_[static_cast<std::size_t>(k)] = check;
    grid->addWidget(check, k, 0);
    for (int side = 0; side < 2; ++side) {
      const int place = 2 * k + side;
      auto* label = new QLabel(names[place], colorBox);
      label->setObjectName(QStringLiteral("lblRowColors_%1").arg(place));
      lblRowColors_[static_cast<std::size_t>(place)] = label;
      ColorSquare* square =
          Square(kFirstTableColor + place, check->text() + QLatin1Char(' ') + label->text());
      label->setBuddy(square);
      grid->addWidget(label, k, 1 + 2 * side, Qt::AlignRight);
      grid->addWidget(square, k, 2 + 2 * side);
      if (kFirstTableColor + place == kUnusedColor) {
        label->hide();
        square->hide();
      }
    }
  }
  grid->setColumnStretch(5, 1);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(layoutBox);
  layout->addWidget(colorBox);
  layout->addStretch();
  return page;
}

QWidget* frmExport::BuildPageTab() {
  auto* page = new QWidget(this);
  auto* options = new QGroupBox(tr("Page Options:"), page);
  auto* grid = new QGridLayout(options);
  const QString colors[] = {tr("Background:"), tr("Text:"), tr("Hyperlink:"), tr("Visited Hyperlink:"),
                            tr("Active Hyperlink:")};
  const QString toolTips[] = {tr("Color of page background"), tr("Color of page text (table)"),
                              tr("Color of hyperlinks"), tr("Color of a visited hyperlink"),
                              tr("Color of the active hyperlink")};
  for (int i = 0; i < 5; ++i) {
    ColorSquare* square = Square(i, toolTips[i]);
    square->setToolTip(toolTips[i]);
    auto* label = new QLabel(colors[i], options);
    label->setBuddy(square);
    grid->addWidget(label, i % 3, 2 * (i / 3), Qt::AlignRight);
    grid->addWidget(square, i % 3, 2 * (i / 3) + 1);
  }
  chkBGImage_ = new QCheckBox(tr("Background &Image"), options);
  chkBGImage_->setObjectName(QStringLiteral("chkBGImage"));
  txtBGImage_ = new EntryBox(QStringLiteral("txtBGImage"), options);
  txtBGImage_->setAccessibleName(tr("Background image"));
  browse_ = new QPushButton(tr("&Browse"), options);
  browse_->setObjectName(QStringLiteral("cmdBGImage"));
  browse_->setAutoDefault(false);
  connect(chkBGImage_, &QCheckBox::toggled, this, [this] { ApplyRules(); });
  connect(browse_, &QPushButton::clicked, this, &frmExport::BrowseImage);
  grid->addWidget(chkBGImage_, 3, 0, 1, 4);
  auto* image = new QHBoxLayout;
  image->addWidget(txtBGImage_, 1);
  image->addWidget(browse_);
  grid->addLayout(image, 4, 0, 1, 5);
  grid->setColumnStretch(4, 1);

  auto* fontBox = new QGroupBox(tr("Page Font:"), page);
  auto* form = new QFormLayout(fontBox);
  cboFontList_ = new QComboBox(fontBox);
  cboFontList_->setObjectName(QStringLiteral("cboFontList"));
  for (const QString& family : QFontDatabase::families())
    if (!family.isEmpty()) cboFontList_->addItem(family);
  // Pages are read elsewhere: the font that every page starts with is offered even where it is not installed.
  const QString standard = QString::fromLatin1(reports::kDefaultPageFont);
  if (cboFontList_->findText(standard, Qt::MatchFixedString | Qt::MatchCaseSensitive) < 0)
    cboFontList_->addItem(standard);
  cboFontSize_ = new QComboBox(fontBox);
  cboFontSize_->setObjectName(QStringLiteral("cboFontSize"));
  cboFontSize_->addItems({tr("Normal"), tr("1  (  8 pt)"), tr("2  (10 pt)"), tr("3  (12 pt)"),
                          tr("4  (14 pt)"), tr("5  (18 pt)"), tr("6  (24 pt)"), tr("7  (36 pt)")});
  form->addRow(tr("&Font:"), cboFontList_);
  form->addRow(tr("&Size:"), cboFontSize_);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(options);
  layout->addWidget(fontBox);
  layout->addStretch();
  return page;
}

void frmExport::Load() {
  engine::Database& league = context_.session.League();
  const reports::PageTexts texts = reports::StoredPageTexts(league);
  SetPageText(txtHeading_, texts.heading);
  SetPageText(txtRepName_, texts.reportName);
  SetPageText(txtCaption_, texts.caption);
  const reports::PageLook look = reports::ReadPageLook(league);
  const int font = cboFontList_->findText(Q(look.font), Qt::MatchFixedString | Qt::MatchCaseSensitive);
  cboFontList_->setCurrentIndex(
      font >= 0 ? font : cboFontList_->findText(QString::fromLatin1(reports::kDefaultPageFont)));
  cboFontSize_->setCurrentIndex(std::clamp<int>(look.fontSize, 0, cboFontSize_->count() - 1));
  chkBGImage_->setChecked(look.useBGImage);
  txtBGImage_->setText(Q(look.bgImage));
  for (std::size_t i = 0; i < lblColor_.size(); ++i) lblColor_[i]->SetColor(look.colors[i]);
  for (std::size_t k = 0; k < chkRowColors_.size(); ++k) chkRowColors_[k]->setChecked(look.switches[k]);
  for (std::size_t k = 0; k < txtLayout_.size(); ++k) txtLayout_[k]->setText(QString::number(look.layout[k]));
  ApplyRules();
}

void frmExport::ReportName(const std::string& name) {
  SetPageText(txtRepName_, name);
}

void frmExport::Heading(const std::string& heading) {
  SetPageText(txtHeading_, heading);
}

void frmExport::Caption(const std::string& caption) {
  SetPageText(txtCaption_, caption);
}

void frmExport::ApplyRules() {
  const bool rows = chkRowColors_[kDefaultRows]->isChecked();
  chkRowColors_[kAlternateRows]->setEnabled(rows);
  if (!rows) chkRowColors_[kAlternateRows]->setChecked(false);
  for (std::size_t k = 0; k < chkRowColors_.size(); ++k) {
    for (std::size_t side = 0; side < 2; ++side) {
      lblRowColors_[2 * k + side]->setEnabled(chkRowColors_[k]->isChecked());
      lblColor_[kFirstTableColor + 2 * k + side]->setEnabled(chkRowColors_[k]->isChecked());
    }
  }
  txtBGImage_->setEnabled(chkBGImage_->isChecked());
  browse_->setEnabled(chkBGImage_->isChecked());
}

void frmExport::LeaveLayoutBox(std::size_t index) {
  const int value = LayoutValue(txtLayout_[index]);
  txtLayout_[index]->setText(QString::number(value));
}

void frmExport::BrowseImage() {
  common::FileRequest request;
  request.title = "Select Background Image";
  request.filter = kImageFilter;
  request.filterIndex = 1;
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (!chosen.empty()) txtBGImage_->setText(Q(chosen.front()));
}

reports::PageTexts frmExport::Texts() const {
  return {PageText(txtHeading_), PageText(txtRepName_), PageText(txtCaption_)};
}

reports::PageLook frmExport::Look() const {
  reports::PageLook look;
  look.useBGImage = chkBGImage_->isChecked();
  look.bgImage = Utf8(txtBGImage_->text());
  for (std::size_t i = 0; i < lblColor_.size(); ++i) look.colors[i] = lblColor_[i]->Color();
  for (std::size_t k = 0; k < chkRowColors_.size(); ++k) look.switches[k] = chkRowColors_[k]->isChecked();
  for (std::size_t k = 0; k < txtLayout_.size(); ++k)
    look.layout[k] = static_cast<std::int16_t>(LayoutValue(txtLayout_[k]));
  look.font = Utf8(cboFontList_->currentText());
  look.fontSize = static_cast<std::int16_t>(std::max(0, cboFontSize_->currentIndex()));
  return look;
}

void frmExport::Preview() {
  const std::string path = common::JoinPath(platform::ApplicationFolder(), "Preview.htm");
  if (!reports::WritePage(context_.session.League(), context_.templateDb, context_.state, subject_, Texts(),
                          Look(), reports::PreviewFooter(), path)) {
    context_.ui.ShowMessage(
        {"Error creating HTML file...", common::kApplicationTitle, common::MessageIcon::None});
    std::error_code error;
    std::filesystem::remove(std::u8string(path.begin(), path.end()), error);
    return;
  }
  if (!context_.ui.ShellOpen(path))
    context_.ui.ShowMessage({"Error viewing preview...", "Error", common::MessageIcon::Exclamation});
}

void frmExport::Export() {
  const bool stored = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    app::SavePageSettings(context_.session, Texts(), Look());
  });
  if (!stored) return;
  cancelled_ = false;
  accept();
}

}  // namespace scorvane::forms
