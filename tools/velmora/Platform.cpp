#include "Tool.h"

#include <cstdio>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace tool {

namespace stdfs = std::filesystem;

stdfs::path pathOf(const std::string& utf8) {
    return stdfs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string textOf(const stdfs::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::string genericTextOf(const stdfs::path& path) {
    const std::u8string text = path.generic_u8string();
    return std::string(text.begin(), text.end());
}

#ifdef _WIN32

namespace {

std::string utf8Of(const wchar_t* wide) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 1) return {};
    std::string text(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
    text.pop_back();
    return text;
}

}  // namespace

void replaceWith(const std::string& from, const std::string& to, std::error_code& code) {
    code.clear();
    if (!MoveFileExW(pathOf(from).c_str(), pathOf(to).c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        code.assign(static_cast<int>(GetLastError()), std::system_category());
    }
}

bool isReadOnlyFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesW(pathOf(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

long long processId() {
    return static_cast<long long>(GetCurrentProcessId());
}

std::vector<std::string> commandLine(int argc, char** argv) {
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    if (words == nullptr) return std::vector<std::string>(argv, argv + argc);
    std::vector<std::string> line;
    for (int i = 0; i < count; ++i)
        line.push_back(utf8Of(words[i]));
    LocalFree(words);
    return line;
}

void prepareConsole() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
}

bool standardOutputIsTerminal() {
    return _isatty(_fileno(stdout)) != 0;
}

bool standardErrorIsTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

bool openInBrowser(const std::string& url) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, url.c_str(), -1, nullptr, 0);
    std::wstring wide(size > 0 ? static_cast<std::size_t>(size) : 1, L'\0');
    MultiByteToWideChar(CP_UTF8, 0, url.c_str(), -1, wide.data(), size);
    const auto opened = reinterpret_cast<INT_PTR>(
        ShellExecuteW(nullptr, L"open", wide.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    return opened > 32;
}

#else

void replaceWith(const std::string& from, const std::string& to, std::error_code& code) {
    stdfs::rename(from, to, code);
}

// A file without any write permission is read-only for everyone, root included.
bool isReadOnlyFile(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return true;
    return access(path.c_str(), W_OK) != 0;
}

long long processId() {
    return static_cast<long long>(getpid());
}

std::vector<std::string> commandLine(int argc, char** argv) {
    return std::vector<std::string>(argv, argv + argc);
}

void prepareConsole() {}

bool standardOutputIsTerminal() {
    return isatty(fileno(stdout)) != 0;
}

bool standardErrorIsTerminal() {
    return isatty(fileno(stderr)) != 0;
}

bool openInBrowser(const std::string& url) {
    // The URL is the tool's own (digits, letters, ":/?=."), so it needs no more quoting.
    const std::string line = "xdg-open '" + url + "' >/dev/null 2>&1";
    return std::system(line.c_str()) == 0;
}

#endif

}  // namespace tool
