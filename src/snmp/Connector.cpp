// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/Connector.h>

Connector::Connector() = default;
Connector::Connector(const Connector&) = default;
Connector& Connector::operator=(const Connector&) = default;
Connector::~Connector() = default;
