// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_RECORDINGMANAGEMENTHANDLER_H
#define VIGIL_SUPPORT_RECORDINGMANAGEMENTHANDLER_H

#include <functional>
#include <string>

#include <vigil/ManagementHandler.h>

#include "support/ScriptedCallbacks.h"

namespace support {

/// Records each call as "function 1" or "function 5 "text"", then runs onCall. Set onCall before registering
/// it.
class RecordingManagementHandler : public ManagementHandler
{
public:
    explicit RecordingManagementHandler(Recorder& recorder) : m_recorder(recorder) {}

    std::function<void()> onCall = [] {};

    void managementFunction1() override { record("function 1"); }
    void managementFunction2() override { record("function 2"); }
    void managementFunction3() override { record("function 3"); }
    void managementFunction4() override { record("function 4"); }
    void managementFunction5(const std::string& argument) override
    {
        record("function 5 \"" + argument + '"');
    }

private:
    void record(const std::string& line)
    {
        m_recorder.add(line);
        onCall();
    }

    Recorder& m_recorder;
};

} // namespace support

#endif
