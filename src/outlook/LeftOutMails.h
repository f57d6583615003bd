// The mails that get no file because of their subjects, and the message that says so.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

class LeftOutMails {
public:
    void Add(const std::wstring& subject);

    // How many there are, why, and the first ten subjects, in the language of the Windows user interface. One line a
    // subject, whatever is in it: it comes from a stranger.
    std::wstring Text() const;

    // Shows the text, unless there are none.
    void Tell(HWND owner) const;

private:
    size_t count_ = 0;
    std::vector<std::wstring> shown_;
};
