// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/PreferencesWindow.h"

#include "platform/UserDefaults.h"
#include "ui/AppIcon.h"
#include "ui/AuxWindow.h"
#include "ui/PlainText.h"
#include "ui/UiFont.h"
#include "window/LanguageSwitch.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {
constexpr int gridColumns = 3;
const QString kCountMountsKey = QStringLiteral("count_mounts");
} // namespace

bool PreferencesWindow::countsMounts() {
    return userDefaults()->value(kCountMountsKey, true).toBool();
}

PreferencesWindow::PreferencesWindow(QWidget* parent)
    : QWidget(parent, kAuxWindowFlags), languageTitle(makePlainLabel({}, this)),
      countMounts(new QCheckBox(this)) {
    setWindowIcon(appIcon());
    languageTitle->setFont(uiFont(13, QFont::DemiBold));
    auto* grid = new QGridLayout;
    grid->setVerticalSpacing(12);
    grid->setHorizontalSpacing(22);
    const std::vector<Lang>& langs = LangInfo::allCases();
    for (size_t i = 0; i < langs.size(); ++i) {
        const Lang lang = langs[i];
        auto* radio = new QRadioButton(LangInfo::native(lang), this);
        radio->setChecked(lang == Loc::current);
        // Checked by a click, a key or a screen reader's toggle action alike.
        connect(radio, &QRadioButton::toggled, this, [this, lang](bool checked) {
            if (checked)
                choose(lang);
        });
        grid->addWidget(radio, int(i) / gridColumns, int(i) % gridColumns);
        radios.append(radio);
    }
    auto* stack = new QVBoxLayout(this);
    stack->setSizeConstraint(QLayout::SetFixedSize);
    stack->setContentsMargins(28, 24, 28, 24);
    stack->setSpacing(14);
    stack->addWidget(languageTitle, 0, Qt::AlignLeft);
    stack->addLayout(grid);
    // Checked as du -sk counts; unchecked as du -skx does.
    countMounts->setChecked(countsMounts());
    connect(countMounts, &QCheckBox::toggled, this, [this](bool checked) {
        userDefaults()->setValue(kCountMountsKey, checked);
        Q_EMIT countMountsChanged(checked);
    });
    stack->addSpacing(4);
    stack->addWidget(countMounts, 0, Qt::AlignLeft);
    retranslate();
}

void PreferencesWindow::choose(Lang lang) {
    const std::vector<Lang>& langs = LangInfo::allCases();
    // The buttons are one exclusive group: checking one unchecks the rest.
    // Quietly: this may run for a radio's own toggle, which must not come back here.
    for (qsizetype i = 0; i < radios.size() && i < qsizetype(langs.size()); ++i) {
        const QSignalBlocker quiet(radios[i]);
        radios[i]->setChecked(langs[size_t(i)] == lang);
    }
    switchLanguage(lang);
}

void PreferencesWindow::retranslate() {
    languageTitle->setText(t(QStringLiteral("prefs_language")));
    countMounts->setText(t(QStringLiteral("pref_count_mounts")));
    setWindowTitle(t(QStringLiteral("prefs_title")));
}

void PreferencesWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        retranslate();
}
