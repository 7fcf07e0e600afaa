// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_LIBRARYTEST_H
#define VIGIL_SUPPORT_LIBRARYTEST_H

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include <vigil/VigilSnmpInterface.h>

#include "support/FakeService.h"
#include "support/LibraryLog.h"
#include "support/Publications.h"

namespace support {

/// A test of the library as an application sees it, with a fake service at the other end.
///
/// Nothing is started before start(), or whatever else in the test calls init(); the library is stopped when
/// the test is over. Checks that a test leaves behind would keep it running into the next one: hold them in
/// CheckPointer.
class LibraryTest : public testing::Test
{
protected:
    LibraryTest();
    ~LibraryTest() override;

    /// Starts the library and waits until it is connected.
    void start();

    /// Returns when the library has sent everything that was published so far, and reacted to all that was
    /// sent to it. Needs the connection.
    void settle();

    /// What was published since the last call, in the order of its arrival.
    std::vector<std::string> publications();

    /// The same, without settling before: for a library that is no longer connected.
    std::vector<std::string> publicationsSoFar();

    /// Sends a SET to validate and returns the verdict, as in "answer 0 to 1.2 = 5".
    std::string validate(const std::string& oid, const std::string& value);
    std::string validate(const std::string& oid, int value);

    /// Sends a committed SET and returns when it has been dealt with.
    void commit(const std::string& oid, const std::string& value);
    void commit(const std::string& oid, int value);

    LibraryLog log;
    FakeService service;
    vigil::VigilSnmpInterface& facade;

private:
    std::string awaitAnswer();

    std::size_t m_reported = 0; // frames that publications() is done with
    int m_mark = 0;
    int m_request = 0;
};

} // namespace support

#endif
