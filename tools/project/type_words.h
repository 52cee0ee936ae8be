// Data types in words: one word for one type, wherever a user sees it.
#ifndef TAVMIR_PROJECT_TYPE_WORDS_H
#define TAVMIR_PROJECT_TYPE_WORDS_H

#include "address_resolver.h"

namespace tavmir::project
{

// "bit", "word", "dword", "real", "text", as the project file spells them; "structure".
const char* typeWord(DataType type);
// The type of such a word; none of others, "structure" among them: such types have names.
std::optional<DataType> typeFromWord(const QString& word);

// The word for one value: one bit of a word is a "bit".
const char* typeWord(const Element& element);
// The same with the length of a text: "text of 8 words".
QString typeInWords(const Element& element);

} // namespace tavmir::project

#endif
