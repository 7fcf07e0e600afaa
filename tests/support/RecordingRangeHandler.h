// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_RECORDINGRANGEHANDLER_H
#define VIGIL_SUPPORT_RECORDINGRANGEHANDLER_H

#include <functional>
#include <string>

#include <vigil/Range.h>
#include <vigil/RangeChangeHandler.h>
#include <vigil/ScalarMetric.h>

#include "support/ScriptedCallbacks.h"

namespace support {

/// Records its calls as "cpu accepts warning 10:20" and "cpu changed critical", then runs the test's action.
/// Set the members before registering it.
class RecordingRangeHandler : public RangeChangeHandler
{
public:
    explicit RecordingRangeHandler(Recorder& recorder) : m_recorder(recorder) {}

    bool accepts = true;
    std::function<void(vigil::ScalarMetric&)> onAsked = [](auto&) {};
    std::function<void(vigil::ScalarMetric&)> onChanged = [](auto&) {};

    bool acceptRangeChange(vigil::ScalarMetric* metric, RangeKind kind, const vigil::Range& range) override
    {
        m_recorder.add(metric->getName() + " accepts " + nameOf(kind) + ' ' + range.toString());
        onAsked(*metric);
        return accepts;
    }

    void rangeChanged(vigil::ScalarMetric* metric, RangeKind kind) override
    {
        m_recorder.add(metric->getName() + " changed " + nameOf(kind));
        onChanged(*metric);
    }

private:
    static std::string nameOf(RangeKind kind) { return kind == RangeKind::Warning ? "warning" : "critical"; }

    Recorder& m_recorder;
};

} // namespace support

#endif
