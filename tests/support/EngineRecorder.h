// A PDF engine within the test program. It makes no PDFs: it records its calls, hands out handles that it knows again,
// and fails where a test wants it to.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// While one lives, it is the engine of the program.
class EngineRecorder {
public:
    EngineRecorder();
    EngineRecorder(const EngineRecorder&) = delete;
    EngineRecorder& operator=(const EngineRecorder&) = delete;
    ~EngineRecorder();

    // The calls in their order, as in "PDF_LoadDocument [C:\a.pdf] []" and "PDF_CloseDocument document1". A handle is
    // named by its kind and its number; contents of up to 100 bytes are shown before their byte count.
    std::vector<std::wstring> calls;
    bool recording = true;  // false: `calls` stays empty, and the recorder allocates nothing

    std::vector<std::wstring> notPdfs;  // paths that do not open
    long failingCall = -1;              // the number, from 0 on, of the call that answers null or false

    // Run at the start of each call with the function's name.
    std::function<void(std::string_view function)> onCall;
    // Run for each content that is set.
    std::function<void(const unsigned char* bytes, size_t count)> onContent;

    // Forgets its calls and handles.
    void Restart();

    long CallCount() const { return callCount_; }
    // Calls so far on a handle that is null, closed or of another document.
    long WrongHandles() const { return wrongHandles_; }
    long OpenDocuments() const;
    long OpenMerges() const;

    // For the engine's functions: they count a call, ask whether it succeeds, and whether a handle is right.
    bool Begin(const char* function);
    void Show(const std::wstring& argument);
    void CountWrongHandle() { ++wrongHandles_; }

private:
    long callCount_ = 0;
    long wrongHandles_ = 0;
};
