// What the stand-ins did, for who wants to tell it later: lines of words with tabs between them, in the file that the
// environment variable ZAVO_JOURNAL names. Without that variable nothing is written.
//
//   clicked       the id of a button
//   saved         number of an item, from 1; the path of its document
//   not saved     number of an item; path; why
//   attachment    number of an item; number of its attachment; the path of the file
//   no attachment number of an item; number of its attachment; path; why
//   exported      a document; its PDF
//   not exported  a document; why
//   shown         a file that the companion was given and found
#pragma once

#include <initializer_list>
#include <string>

void WriteJournal(std::initializer_list<std::wstring> words);
