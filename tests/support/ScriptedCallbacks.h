// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_SCRIPTEDCALLBACKS_H
#define VIGIL_SUPPORT_SCRIPTEDCALLBACKS_H

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <vigil/Oid.h>
#include <vigil/StateInfoCallback.h>
#include <vigil/ValueChangedCallback.h>

namespace support {

/// A list of lines. Any thread may add to it.
class Recorder
{
public:
    void add(const std::string& line)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back(line);
    }

    std::vector<std::string> lines() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

/// Records its calls as "NAME changed 1.2 = 5" or "NAME validates 1.2 = "text"", runs the test's action, and
/// answers validations with verdict. Set the members before registering it.
class ScriptedCallback : public vigil::ValueChangedCallback
{
public:
    explicit ScriptedCallback(Recorder& recorder, std::string name = "callback")
        : m_recorder(recorder), m_name(std::move(name))
    {}

    std::function<void()> onCall = [] {};
    unsigned int verdict = 0;

    unsigned int callbackValidateValue(const vigil::Oid& cell, const std::string& value) override
    {
        return validates(cell, '"' + value + '"');
    }
    unsigned int callbackValidateValue(const vigil::Oid& cell, const int& value) override
    {
        return validates(cell, std::to_string(value));
    }
    void callbackValueChanged(const vigil::Oid& cell, std::string value) override
    {
        record(" changed ", cell, '"' + value + '"');
    }
    void callbackValueChanged(const vigil::Oid& cell, int value) override
    {
        record(" changed ", cell, std::to_string(value));
    }

private:
    unsigned int validates(const vigil::Oid& cell, const std::string& value)
    {
        record(" validates ", cell, value);
        return verdict;
    }

    void record(const char* what, const vigil::Oid& cell, const std::string& value)
    {
        m_recorder.add(m_name + what + cell.toStdString() + " = " + value);
        onCall();
    }

    Recorder& m_recorder;
    std::string m_name;
};

/// Records "connected" and "disconnected", then runs the test's action.
class ScriptedStateCallback : public vigil::StateInfoCallback
{
public:
    explicit ScriptedStateCallback(Recorder& recorder) : m_recorder(recorder) {}

    std::function<void()> onCall = [] {};

    void callbackStateInfo(int state) override
    {
        m_recorder.add(state == 0 ? "connected" : state == 1 ? "disconnected" : "?");
        onCall();
    }

private:
    Recorder& m_recorder;
};

} // namespace support

#endif
