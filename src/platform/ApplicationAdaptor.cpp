// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ApplicationAdaptor.h"

#include "platform/SingleInstance.h"

ApplicationAdaptor::ApplicationAdaptor(SingleInstance* instance)
    : QDBusAbstractAdaptor(instance), instance(instance) {}

void ApplicationAdaptor::Activate(const QVariantMap& platformData) {
    instance->activate(platformData);
}

void ApplicationAdaptor::Open(const QStringList& uris, const QVariantMap& platformData) {
    instance->open(uris, platformData);
}

void ApplicationAdaptor::ActivateAction(const QString& name, const QVariantList&,
                                        const QVariantMap&) {
    instance->refuseAction(name);
}
