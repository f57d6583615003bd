// The records of MAPISendMailW, which the headers of some tool chains lack. Source: Windows SDK, MAPI.h.
#pragma once

#include <windows.h>

struct MapiFileDescW {
    ULONG ulReserved;
    ULONG flFlags;
    ULONG nPosition;
    PWSTR lpszPathName;
    PWSTR lpszFileName;
    PVOID lpFileType;
};
static_assert(sizeof(MapiFileDescW) == 40);

struct MapiMessageW {
    ULONG ulReserved;
    PWSTR lpszSubject;
    PWSTR lpszNoteText;
    PWSTR lpszMessageType;
    PWSTR lpszDateReceived;
    PWSTR lpszConversationID;
    ULONG flFlags;
    PVOID lpOriginator;
    ULONG nRecipCount;
    PVOID lpRecips;
    ULONG nFileCount;
    MapiFileDescW* lpFiles;
};
static_assert(sizeof(MapiMessageW) == 96);
