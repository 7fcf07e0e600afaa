// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/ConfigurationFile.h"

#include <QDir>
#include <QFile>

#include <array>
#include <memory>
#include <vector>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

namespace agent::configurationFile {

namespace {

constexpr DWORD dangerous = FILE_READ_DATA | FILE_WRITE_DATA | FILE_APPEND_DATA | WRITE_DAC | WRITE_OWNER |
                            GENERIC_READ | GENERIC_WRITE | GENERIC_ALL;

struct LocalMemory
{
    void operator()(void* memory) const { LocalFree(memory); }
};

template <typename Type>
using Local = std::unique_ptr<Type, LocalMemory>;

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

/// The user of this process; empty if the system does not tell.
std::vector<char> ownUser()
{
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    std::vector<char> user(sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE);
    DWORD size = 0;
    const bool isKnown =
        GetTokenInformation(token, TokenUser, user.data(), static_cast<DWORD>(user.size()), &size) != 0;
    CloseHandle(token);
    return isKnown ? user : std::vector<char>();
}

bool isOwnUser(PSID sid)
{
    static const std::vector<char> user = ownUser();
    return !user.empty() && EqualSid(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, sid);
}

/// The account of a Windows service. Only administrators can add services.
bool isService(PSID sid)
{
    constexpr DWORD serviceAuthority = 80;
    return *GetSidSubAuthorityCount(sid) > 1 && *GetSidSubAuthority(sid, 0) == serviceAuthority &&
           GetSidIdentifierAuthority(sid)->Value[5] == 5; // SECURITY_NT_AUTHORITY
}

bool isTrusted(PSID sid)
{
    for (const WELL_KNOWN_SID_TYPE known :
         {WinLocalSystemSid, WinBuiltinAdministratorsSid, WinCreatorOwnerRightsSid}) {
        if (IsWellKnownSid(sid, known))
            return true;
    }
    return isOwnUser(sid) || isService(sid);
}

QString nameOf(PSID sid)
{
    std::array<wchar_t, 256> name = {};
    std::array<wchar_t, 256> domain = {};
    DWORD nameSize = name.size();
    DWORD domainSize = domain.size();
    SID_NAME_USE use = SidTypeUnknown;
    if (LookupAccountSidW(nullptr, sid, name.data(), &nameSize, domain.data(), &domainSize, &use))
        return QString::fromWCharArray(name.data());
    LPWSTR text = nullptr;
    if (!ConvertSidToStringSidW(sid, &text))
        return QStringLiteral("another user");
    const Local<wchar_t> owned(text);
    return QString::fromWCharArray(text);
}

/// The first entry that lets someone else in; null if there is none.
PSID strangerIn(PACL list)
{
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* found = nullptr;
        if (!GetAce(list, index, &found))
            continue;
        auto* entry = static_cast<ACCESS_ALLOWED_ACE*>(found);
        const bool isForChildrenOnly = (entry->Header.AceFlags & INHERIT_ONLY_ACE) != 0;
        if (entry->Header.AceType != ACCESS_ALLOWED_ACE_TYPE || isForChildrenOnly ||
            (entry->Mask & dangerous) == 0)
            continue;
        PSID sid = &entry->SidStart;
        if (!isTrusted(sid))
            return sid;
    }
    return nullptr;
}

Error openTo(const QString& path, const QString& who)
{
    return Error(
        QStringLiteral("the configuration file %1 holds secrets, but \"%2\" has rights to it. Leave it to "
                       "administrators and the system: icacls \"%1\" /inheritance:r /grant:r "
                       "*S-1-5-32-544:F *S-1-5-18:F")
            .arg(QDir::toNativeSeparators(path), who));
}

} // namespace

Error checkRights(const QString& path)
{
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD problem = GetNamedSecurityInfoW(wide(QDir::toNativeSeparators(path)), SE_FILE_OBJECT,
                                                OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                                &owner, nullptr, &list, nullptr, &descriptor);
    if (problem != ERROR_SUCCESS)
        return Error(QStringLiteral("cannot read the rights of the configuration file %1: %2")
                         .arg(path, qt_error_string(static_cast<int>(problem))));
    const Local<void> owned(descriptor);
    if (!list)
        return openTo(path, QStringLiteral("everyone"));
    if (owner && !isTrusted(owner))
        return openTo(path, nameOf(owner));
    PSID stranger = strangerIn(list);
    return stranger ? openTo(path, nameOf(stranger)) : Error();
}

QByteArray nameForC(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    if (QFile::decodeName(name) == path)
        return name;
    std::array<wchar_t, 32'768> brief = {}; // the name that MS-DOS programs see
    const DWORD size = GetShortPathNameW(wide(QDir::toNativeSeparators(path)), brief.data(),
                                         static_cast<DWORD>(brief.size()));
    const QString found = QString::fromWCharArray(brief.data(), static_cast<int>(size));
    const QByteArray foundName = QFile::encodeName(found);
    return QFile::decodeName(foundName) == found ? foundName : QByteArray();
}

} // namespace agent::configurationFile
