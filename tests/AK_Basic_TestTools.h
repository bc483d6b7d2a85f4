// What tests of every layer need around files and messages.

#pragma once

#include "AK_Basic.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// An empty directory of its own, gone with all it holds when the test ends.
class TemporaryDirectory {
public:
    TemporaryDirectory()
    {
        // In memory where there is such a place: tests write thousands of small files, and truncating one on disc waits.
        std::string name = AK_System::IsDirectory("/dev/shm") ? "/dev/shm/korvo_test_XXXXXX" : "/tmp/korvo_test_XXXXXX";
        AK_ASSERT(mkdtemp(name.data()));
        _path = name.c_str();
    }
    ~TemporaryDirectory() { AK_System::RemoveFileRecursively(_path); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    AK_String operator/(const char* name) const { return _path + "/" + name; }
    const AK_String& Path() const { return _path; }

private:
    AK_String _path;
};

/// Keeps the messages sent while it lives instead of letting them out.
class CaughtMessages {
public:
    CaughtMessages()
    {
        ak_msg_func = Catch;
        Texts().clear();
        Locations().clear();
    }
    ~CaughtMessages() { ak_msg_func = ak_default_msg_func; }
    CaughtMessages(const CaughtMessages&) = delete;
    CaughtMessages& operator=(const CaughtMessages&) = delete;

    static std::vector<std::string>& Texts()
    {
        static std::vector<std::string> texts;
        return texts;
    }
    static std::vector<std::string>& Locations()
    {
        static std::vector<std::string> locations;
        return locations;
    }

private:
    static void Catch(const char* message, const char* location)
    {
        Texts().push_back(message);
        Locations().push_back(location);
    }
};

inline void WriteFile(const AK_String& name, const std::string& bytes)
{
    std::ofstream(name.c_str(), std::ios::binary) << bytes;
}

inline std::string FileBytes(const AK_String& name)
{
    std::ifstream in(name.c_str(), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// The list as "a|b|c|", so that a failed comparison shows it whole.
inline std::string Joined(const AK_List<AK_String>& list) { return AK_String(list, "|").c_str(); }
