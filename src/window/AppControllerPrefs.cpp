// The Preferences window (the interface language, as nine radio buttons) and the
// switch of language that its buttons make.
#include "app/AppController.h"
#include "ui/AuxWindow.h"
#include "platform/UserDefaults.h"
#include "ui/PlainText.h"
#include "ui/UiFont.h"

#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

constexpr int gridColumns = 3;

} // namespace

void AppController::showPrefs() {
    if (!prefsWindow) {
        prefsWindow = makeAuxWindow(this);

        prefsLangLabel = makePlainLabel(t(QStringLiteral("prefs_language")), prefsWindow);
        prefsLangLabel->setFont(uiFont(13, QFont::DemiBold));

        auto* grid = new QGridLayout;
        grid->setVerticalSpacing(12);
        grid->setHorizontalSpacing(22);
        langRadios.clear();
        const std::vector<Lang>& langs = LangInfo::allCases();
        for (size_t i = 0; i < langs.size(); ++i) {
            const Lang lang = langs[i];
            auto* radio = new QRadioButton(LangInfo::native(lang), prefsWindow);
            radio->setChecked(lang == Loc::current);
            // Checked by a click, a key or a screen reader's toggle action alike.
            connect(radio, &QRadioButton::toggled, this, [this, lang](bool checked) {
                if (checked)
                    langRadioChanged(lang);
            });
            grid->addWidget(radio, int(i) / gridColumns, int(i) % gridColumns);
            langRadios.append(radio);
        }

        auto* stack = new QVBoxLayout(prefsWindow);
        stack->setSizeConstraint(QLayout::SetFixedSize);
        stack->setContentsMargins(28, 24, 28, 24);
        stack->setSpacing(14);
        stack->addWidget(prefsLangLabel, 0, Qt::AlignLeft);
        stack->addLayout(grid);
    }
    prefsWindow->setWindowTitle(t(QStringLiteral("prefs_title")));
    presentCentered(prefsWindow, window ? window->screen() : nullptr);
}

void AppController::langRadioChanged(Lang lang) {
    const std::vector<Lang>& langs = LangInfo::allCases();
    // The buttons are one exclusive group: checking one unchecks the rest.
    // Quietly: this may run for a radio's own toggle, which must not come back here.
    for (qsizetype i = 0; i < langRadios.size() && i < qsizetype(langs.size()); ++i) {
        const QSignalBlocker quiet(langRadios[i]);
        langRadios[i]->setChecked(langs[size_t(i)] == lang);
    }
    Loc::current = lang;
    userDefaults()->setValue(QStringLiteral("lang"), LangInfo::rawValue(lang));
    relocalize();
}
