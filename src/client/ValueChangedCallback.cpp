// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/ValueChangedCallback.h>

namespace vigil {

ValueChangedCallback::~ValueChangedCallback() = default;

unsigned int ValueChangedCallback::callbackValidateValue(const Oid&, const std::string&)
{
    return 0;
}

unsigned int ValueChangedCallback::callbackValidateValue(const Oid&, const int&)
{
    return 0;
}

void ValueChangedCallback::callbackValueChanged(const Oid&, std::string) {}

void ValueChangedCallback::callbackValueChanged(const Oid&, int) {}

} // namespace vigil
