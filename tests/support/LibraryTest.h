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
/// start() or any init() starts the library; it stops at the end of the test. A check left alive would keep
/// it running into the next test, so hold checks in CheckPointer.
class LibraryTest : public testing::Test
{
protected:
    LibraryTest();
    ~LibraryTest() override;

    /// Starts the library and waits until it is connected.
    void start();

    /// Returns once the library has sent everything published so far and handled everything sent to it. Needs
    /// the connection.
    void settle();

    /// Everything published since the last call, oldest first.
    std::vector<std::string> publications();

    /// The same without settling first, for a library without a connection.
    std::vector<std::string> publicationsSoFar();

    /// Sends a SET to validate and returns the verdict, as in "answer 0 to 1.2 = 5".
    std::string validate(const std::string& oid, const std::string& value);
    std::string validate(const std::string& oid, int value);

    /// Sends a committed SET and returns once the library has handled it.
    void commit(const std::string& oid, const std::string& value);
    void commit(const std::string& oid, int value);

    LibraryLog log;
    FakeService service;
    vigil::VigilSnmpInterface& facade;

private:
    void send(int dataType, const QByteArray& payload, int callbackId);
    std::string awaitAnswer();
    void awaitPublications();

    std::size_t m_reported = 0; // frames already returned by publications()
    int m_mark = 0;
    int m_request = 1'000'000; // apart from the numbers in the tests themselves
};

} // namespace support

#endif
