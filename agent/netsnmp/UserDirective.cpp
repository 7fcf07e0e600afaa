// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/UserDirective.h"

#include <array>
#include <cstring>

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

namespace {

using Word = std::array<char, 1024>;

/// Takes the next word, as Net-SNMP does. Returns the rest; null at the end of the line.
const char* takeWord(const char* line, Word& word)
{
    word[0] = '\0';
    return line ? copy_nword_const(line, word.data(), static_cast<int>(word.size())) : nullptr;
}

/// createUser [-e ENGINEID] NAME [AUTHENTICATION PASSPHRASE ...]
bool hasPassphrase(const char* line)
{
    Word word = {};
    const char* rest = takeWord(line, word); // the name
    if (std::strcmp(word.data(), "-e") == 0)
        rest = takeWord(takeWord(rest, word), word);
    if (!rest)
        return true; // none is needed
    return takeWord(rest, word) != nullptr;
}

void readUser(const char* directive, char* line)
{
    if (hasPassphrase(line))
        usm_parse_create_usmUser(directive, line);
    else
        config_perror("missing passphrase");
}

} // namespace

void checkUserDirectives()
{
    snmpd_register_config_handler("createUser", &readUser, nullptr,
                                  "[-e ENGINEID] username authentication passphrase [privacy [passphrase]]");
}

} // namespace agent
