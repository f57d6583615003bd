// An automation object in front of another one: it counts every call, and lets one go wrong.
//
// A call is one step over the wire: looking a member's name up is one, invoking a member is another. Objects that come
// back as results are wrapped again, so a whole object model is counted from its first object on.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <functional>
#include <string>
#include <vector>

// What happens at the call that goes wrong.
enum class Fault {
    None,
    Refused,          // it fails, and nothing was done
    DoneButFailed,    // it fails, but was carried out: a file was saved, a document opened
    WrongType,        // an object instead of a text, number or date, a text instead of an object; a number that no
                      // member has, for a look-up
    WrongNull,        // the right type, but null: no object, no text; else as with WrongType
    RefusedFromHere,  // it and all after it fail: the other side has died
};

struct CountedCall {
    std::wstring member;
    bool isLookUp;
    VARTYPE resultType;  // VT_EMPTY for a look-up and for an invocation that asks for no result
};

// The calls of all objects that share it. They run on one thread.
class CallFaults {
public:
    CallFaults() = default;
    CallFaults(const CallFaults&) = delete;
    CallFaults& operator=(const CallFaults&) = delete;

    Fault fault = Fault::None;
    size_t failingCall = 0;  // from 0 on; the first call after Restart is 0

    // Run when a call comes in, with true, and when it goes out, with false: what lies between is the host's own doing.
    std::function<void(bool inside)> onHost;

    // Run for each call that goes wrong.
    std::function<void(const std::wstring& member)> onBroken;

    bool recording = false;  // false: `calls` stays empty
    std::vector<CountedCall> calls;

    size_t Count() const { return count_; }  // since Restart
    void Restart();

    Fault Begin(const std::wstring& member, bool isLookUp);
    void NoteResult(VARTYPE type);

private:
    size_t count_ = 0;
};

// Tells `onHost` of a scope that the host runs in.
class HostScope {
public:
    explicit HostScope(const CallFaults& faults) : faults_(faults) {
        if (faults_.onHost) faults_.onHost(true);
    }
    HostScope(const HostScope&) = delete;
    HostScope& operator=(const HostScope&) = delete;
    ~HostScope() {
        if (faults_.onHost) faults_.onHost(false);
    }

private:
    const CallFaults& faults_;
};

// The object before `inner`; it shows all interfaces that `inner` does, which have to be IDispatch by another name. It
// is among the LiveObjects while it lives. `faults` has to outlive it.
Microsoft::WRL::ComPtr<IDispatch> Wrap(const Microsoft::WRL::ComPtr<IDispatch>& inner, CallFaults& faults);
