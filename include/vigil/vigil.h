// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_VIGIL_H
#define VIGIL_VIGIL_H

// The whole interface of the library.

#include <vigil/Connector.h>
#include <vigil/HealthCheck.h>
#include <vigil/ManagementHandler.h>
#include <vigil/Metric.h>
#include <vigil/Oid.h>
#include <vigil/Range.h>
#include <vigil/RangeChangeHandler.h>
#include <vigil/Result.h>
#include <vigil/ScalarMetric.h>
#include <vigil/SimpleMetric.h>
#include <vigil/StateInfoCallback.h>
#include <vigil/ValueChangedCallback.h>
#include <vigil/VigilSnmpInterface.h>

#endif
