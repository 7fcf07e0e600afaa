// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/FileRights.h"

#include <QDir>

#include <array>
#include <memory>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include "agent/core/ServiceAccount.h"

namespace agent::fileRights {

namespace {

constexpr DWORD dangerous = FILE_READ_DATA | FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE |
                            WRITE_DAC | WRITE_OWNER | GENERIC_READ | GENERIC_WRITE | GENERIC_ALL;

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

QString problemText(DWORD problem)
{
    return qt_error_string(static_cast<int>(problem));
}

/// Sets sid to the user of this process. False if the system does not tell.
bool readOwnUser(PSID sid)
{
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token))
        return false;
    std::array<char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user = {};
    DWORD size = 0;
    const bool isKnown = GetTokenInformation(token, TokenUser, user.data(), user.size(), &size) != 0;
    CloseHandle(token);
    return isKnown &&
           CopySid(SECURITY_MAX_SID_SIZE, sid, reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
}

/// Null if the system does not tell.
PSID ownUser()
{
    static std::array<char, SECURITY_MAX_SID_SIZE> sid = {};
    static const bool isKnown = readOwnUser(sid.data());
    return isKnown ? sid.data() : nullptr;
}

QString textOf(PSID sid)
{
    LPWSTR text = nullptr;
    if (!sid || !ConvertSidToStringSidW(sid, &text))
        return {};
    const Local<wchar_t> owned(text);
    return QString::fromWCharArray(text);
}

bool isServiceAccount(PSID sid)
{
    static const QString account = serviceAccount::sid(serviceAccount::service());
    return textOf(sid) == account;
}

bool isTrusted(PSID sid)
{
    for (const WELL_KNOWN_SID_TYPE known :
         {WinLocalSystemSid, WinBuiltinAdministratorsSid, WinCreatorOwnerRightsSid}) {
        if (IsWellKnownSid(sid, known))
            return true;
    }
    return (ownUser() && EqualSid(ownUser(), sid)) || isServiceAccount(sid);
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
    const QString text = textOf(sid);
    return text.isEmpty() ? QStringLiteral("another user") : text;
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

/// Attributes of a new file or folder that are in force from its first moment on.
class Protection
{
public:
    explicit Protection(ServiceMay may)
    {
        const QString rights = may == ServiceMay::Read ? QStringLiteral("FRFX") : QStringLiteral("0x1301bf");
        const QString text = QStringLiteral("O:BAD:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;%1;;;%2)")
                                 .arg(rights, serviceAccount::sid(serviceAccount::service()));
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        if (ConvertStringSecurityDescriptorToSecurityDescriptorW(wide(text), SDDL_REVISION_1, &descriptor,
                                                                 nullptr))
            m_descriptor.reset(descriptor);
        m_attributes.nLength = sizeof m_attributes;
        m_attributes.lpSecurityDescriptor = descriptor;
    }

    SECURITY_ATTRIBUTES* get() { return &m_attributes; }

private:
    Local<void> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes = {};
};

Error checkFolder(const QString& path)
{
    const DWORD attributes = GetFileAttributesW(wide(path));
    const bool isFolder = attributes != INVALID_FILE_ATTRIBUTES &&
                          (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
                          (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
    if (!isFolder)
        return Error(QStringLiteral("%1 is not a folder; remove it").arg(path));
    QString stranger;
    if (Error error = findStranger(path, stranger))
        return error;
    if (stranger.isEmpty())
        return {};
    return Error(QStringLiteral("\"%1\" has rights to the folder %2, which must be closed to others. Move "
                                "it away; a new one is made")
                     .arg(stranger, path));
}

} // namespace

Error findStranger(const QString& path, QString& stranger)
{
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD problem = GetNamedSecurityInfoW(wide(QDir::toNativeSeparators(path)), SE_FILE_OBJECT,
                                                OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                                &owner, nullptr, &list, nullptr, &descriptor);
    if (problem != ERROR_SUCCESS)
        return Error(QStringLiteral("cannot read the rights of %1: %2").arg(path, problemText(problem)));
    const Local<void> owned(descriptor);
    if (!list)
        stranger = QStringLiteral("everyone");
    else if (owner && !isTrusted(owner))
        stranger = nameOf(owner);
    else if (PSID sid = strangerIn(list))
        stranger = nameOf(sid);
    else
        stranger.clear();
    return {};
}

Error makeFolder(const QString& path, ServiceMay may)
{
    const QString native = QDir::toNativeSeparators(path);
    Protection protection(may);
    if (CreateDirectoryW(wide(native), protection.get()))
        return {};
    const DWORD problem = GetLastError();
    if (problem == ERROR_ALREADY_EXISTS)
        return checkFolder(native);
    return Error(QStringLiteral("cannot make the folder %1: %2").arg(native, problemText(problem)));
}

Error makeFile(const QString& path, const QByteArray& contents, ServiceMay may)
{
    const QString native = QDir::toNativeSeparators(path);
    Protection protection(may);
    HANDLE file = CreateFileW(wide(native), GENERIC_WRITE, 0, protection.get(), CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return Error(QStringLiteral("cannot make the file %1: %2").arg(native, problemText(GetLastError())));
    DWORD written = 0;
    const bool isWritten =
        WriteFile(file, contents.constData(), static_cast<DWORD>(contents.size()), &written, nullptr) != 0;
    const DWORD problem = GetLastError();
    CloseHandle(file);
    if (isWritten && static_cast<int>(written) == contents.size())
        return {};
    DeleteFileW(wide(native));
    return Error(QStringLiteral("cannot write the file %1: %2").arg(native, problemText(problem)));
}

QString ownSid()
{
    return textOf(ownUser());
}

} // namespace agent::fileRights
