// A converted mail, and the order of mails in time.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <string>
#include <vector>

struct MailRecord {
    Microsoft::WRL::ComPtr<IDispatch> item;  // empty: a mailbox on a server has only some 250 items open at once
    std::wstring key;                        // see GetMailKey
    std::wstring pdfPath;                    // of the PDF made from the mail
    SYSTEMTIME received;                     // local time
};

// Oldest first, to the second. The order of records whose times agree that far is not defined.
void SortByReceivedTime(std::vector<MailRecord>& records);
