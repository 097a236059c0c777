// The languages' part of the controller.
#include "app/AppController.h"
#include "platform/UserDefaults.h"
#include "platform/PreferredLanguages.h"

Lang AppController::defaultLang() {
    const QVariant stored = userDefaults()->value(QStringLiteral("lang"));
    const std::optional<QString> code =
        stored.isValid() ? std::optional<QString>(stored.toString()) : std::nullopt;
    return chooseLang(code, preferredLanguages());
}
