// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_RECORD_H
#define VIGIL_TESTING_RECORD_H

#include <string>

#include "testing/Frame.h"

namespace vigil::test {

enum DataType { NumberType = 0, TextType = 1, NumberReplyType = 2, TextReplyType = 3 };

enum CallbackId { PlainValue = 0, ValueAndNotify = 1, Validation = 2 };

/// A value, its withdrawal, or the reply to a SET.
struct Record
{
    enum class Kind { Number, Text, Withdrawal };

    Kind kind = Kind::Number;
    int request = 0;        ///< a reply returns that of its request
    std::string identifier; ///< below the enterprise's
    int number = 0;
    std::string text;
    bool isReply = false;
    int errorStatus = 0; ///< of a reply; 0 accepts
};

/// The record in the payload of a frame. Throws a std::exception if it is none.
Record decode(const Frame& frame);

/// The payload for a number or a text, and its data type.
std::string encode(const Record& record);
DataType dataTypeOf(const Record& record);

} // namespace vigil::test

#endif
