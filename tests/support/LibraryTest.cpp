// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/LibraryTest.h"

#include <vigil/Oid.h>

#include "base/wire/Protocol.h"
#include "base/wire/SnmpResponse.h"

namespace support {

namespace {

const std::string markOid = "99.99"; // of the test's own values: they mark how far the library is

bool isPublication(const std::string& line)
{
    return line.rfind("answer ", 0) != 0 && line.rfind(markOid, 0) != 0;
}

/// An answer returns its request's store type, so a unique one identifies the request.
int requestNumber(const FakeService::Frame& frame)
{
    if (frame.header.dataType == base::SnmpIntResponseType)
        return base::SnmpIntResponse(frame.payload).varbind.storeType();
    if (frame.header.dataType == base::SnmpStringResponseType)
        return base::SnmpStringResponse(frame.payload).varbind.storeType();
    return 0;
}

} // namespace

LibraryTest::LibraryTest() : facade(vigil::VigilSnmpInterface::instance())
{
    qputenv("VIGIL_SERVICE_PORT", QByteArray::number(service.port()));
}

LibraryTest::~LibraryTest()
{
    facade.cleanup();
}

void LibraryTest::start()
{
    facade.init("test");
    awaitPublications();
}

void LibraryTest::settle()
{
    awaitPublications();  // needs the connection, so a request finds it
    validate(markOid, 0); // the SETs before it have been handled, and may have published something
    awaitPublications();
}

void LibraryTest::awaitPublications()
{
    const std::string mark = set(markOid, ++m_mark);
    facade.sendValue(vigil::Oid::fromStdString("1.3.6.1.4.1.32473." + markOid), m_mark, 0);
    const auto isMark = [&](const auto& frame) { return describe(frame) == mark; };
    ASSERT_TRUE(service.waitForFrame(isMark, FakeService::defaultTimeoutMs, m_reported))
        << "the library is not connected";
}

std::vector<std::string> LibraryTest::publications()
{
    settle();
    return publicationsSoFar();
}

std::vector<std::string> LibraryTest::publicationsSoFar()
{
    const std::vector<FakeService::Frame> frames = service.frames(m_reported);
    m_reported += frames.size();
    std::vector<std::string> lines;
    for (const FakeService::Frame& frame : frames) {
        const std::string line = describe(frame);
        if (isPublication(line))
            lines.push_back(line);
    }
    return lines;
}

std::string LibraryTest::validate(const std::string& oid, const std::string& value)
{
    ++m_request;
    send(base::SnmpStringType, encodedString(oid, value, m_request), base::Validation);
    return awaitAnswer();
}

std::string LibraryTest::validate(const std::string& oid, int value)
{
    ++m_request;
    send(base::SnmpIntType, encodedInt(oid, value, m_request), base::Validation);
    return awaitAnswer();
}

void LibraryTest::commit(const std::string& oid, const std::string& value)
{
    send(base::SnmpStringType, encodedString(oid, value), base::PlainValue);
    validate(markOid, 0); // frames are dealt with in their order
}

void LibraryTest::commit(const std::string& oid, int value)
{
    send(base::SnmpIntType, encodedInt(oid, value), base::PlainValue);
    validate(markOid, 0);
}

void LibraryTest::send(int dataType, const QByteArray& payload, int callbackId)
{
    ASSERT_TRUE(service.waitForConnections(1)) << "the library is not connected";
    service.send(dataType, payload, callbackId);
}

std::string LibraryTest::awaitAnswer()
{
    std::string answer;
    const auto isAnswer = [&](const auto& frame) {
        if (requestNumber(frame) != m_request)
            return false;
        answer = describe(frame);
        return true;
    };
    service.waitForFrame(isAnswer, FakeService::defaultTimeoutMs, m_reported);
    return answer;
}

} // namespace support
