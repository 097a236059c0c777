// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "text/Lang.h"

#include <QList>
#include <QWidget>

class QCheckBox;
class QLabel;
class QRadioButton;

// The Preferences window: the interface language, as nine radio buttons; choosing one
// switches the whole program at once. Closing it only hides it.
class PreferencesWindow : public QWidget {
    Q_OBJECT
public:
    explicit PreferencesWindow(QWidget* parent = nullptr);

    // The button of each language, in the order of LangInfo::allCases().
    const QList<QRadioButton*>& languageButtons() const { return radios; }

    // Whether volumes mounted inside a folder count in its total, as stored.
    static bool countsMounts();

Q_SIGNALS:
    void countMountsChanged(bool count);

protected:
    void changeEvent(QEvent* event) override;

private:
    void choose(Lang lang);
    void retranslate();

    QLabel* languageTitle;
    QCheckBox* countMounts;
    QList<QRadioButton*> radios;
};
