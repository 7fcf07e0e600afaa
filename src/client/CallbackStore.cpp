// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/CallbackStore.h"

#include <vigil/StateInfoCallback.h>
#include <vigil/ValueChangedCallback.h>

#include <QString>

#include "base/Logging.h"
#include "base/Printable.h"
#include "client/GuardedCall.h"

using vigil::Oid;
using vigil::StateInfoCallback;
using vigil::ValueChangedCallback;

namespace {

QString toText(int value)
{
    return QString::number(value);
}

QString toText(const std::string& value)
{
    return QString::fromStdString(value);
}

} // namespace

void CallbackStore::registerValueChangedCallback(const Oid& oid, ValueChangedCallback* cb)
{
    if (cb)
        m_valueCallbacks[oid] = cb;
}

void CallbackStore::deregisterValueChanged(const Oid& oid)
{
    m_valueCallbacks.erase(oid);
}

void CallbackStore::deregisterValueChangedCallback(ValueChangedCallback* cb)
{
    if (!cb)
        return;
    for (auto entry = m_valueCallbacks.begin(); entry != m_valueCallbacks.end();)
        entry = entry->second == cb ? m_valueCallbacks.erase(entry) : std::next(entry);
}

void CallbackStore::registerStateInfoCallback(StateInfoCallback* cb)
{
    if (cb)
        m_stateInfoCallbacks.insert(cb);
}

void CallbackStore::deregisterStateInfoCallback(StateInfoCallback* cb)
{
    if (cb)
        m_stateInfoCallbacks.erase(cb);
}

void CallbackStore::notifyStateInfo(int state)
{
    for (StateInfoCallback* callback : m_stateInfoCallbacks)
        callGuarded("callbackStateInfo", [&] { callback->callbackStateInfo(state); });
}

void CallbackStore::notifyAll(const Oid& oid, int value)
{
    notifyAllOf(oid, value);
}

void CallbackStore::notifyAll(const Oid& oid, const std::string& value)
{
    notifyAllOf(oid, value);
}

template <typename Value>
void CallbackStore::notifyAllOf(const Oid& oid, const Value& value)
{
    const QString oidText = QString::fromStdString(oid.toStdString());
    const QString valueText = base::printable(toText(value));
    base::writeLog(QStringLiteral("notifyAll(oid=%1, value=%2)").arg(oidText, valueText));
    for (const auto& [registered, callback] : m_valueCallbacks) {
        if (!callback || !registered.containsChild(oid))
            continue;
        const QString address = QString::number(reinterpret_cast<quintptr>(callback));
        base::writeLog(
            QStringLiteral("%1->callbackValueChanged(%2, value=%3)").arg(address, oidText, valueText));
        callGuarded("callbackValueChanged", [&, told = callback] { told->callbackValueChanged(oid, value); });
    }
}

ValueChangedCallback* CallbackStore::findValueChangedCallback(const Oid& oid)
{
    return m_valueCallbacks[oid];
}
