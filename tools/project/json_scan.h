// A first look at JSON bytes for what QJsonDocument lets pass: how deep they nest and keys
// given twice; and for what is still open where they end. Private to this folder.
#ifndef TAVMIR_PROJECT_JSON_SCAN_H
#define TAVMIR_PROJECT_JSON_SCAN_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace tavmir::project
{

struct TextPlace {
    int line = 1;   // from 1
    int column = 1; // from 1, in bytes
};

TextPlace placeOf(const QByteArray& text, int offset);

struct JsonScan {
    int offset = -1; // of what is wrong, -1: nothing found
    QString problem;
    // Of the innermost text, list or object that is still open at the end; -1: none is.
    int openOffset = -1;
    const char* openKind = ""; // "a text"
    int lastToken = 0;         // where the last piece begins: a text, a number, a word or a sign
};

// The offset behind the last byte that is no blank.
int endOfText(const QByteArray& text);

// Any bytes are safe. Malformed JSON is left to the parser proper. Costs the text once.
JsonScan scanJson(const QByteArray& text, int maxNesting);

} // namespace tavmir::project

#endif
