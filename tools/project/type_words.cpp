// A table of types.
#include "type_words.h"

#include "counted.h"

namespace tavmir::project
{

namespace
{

struct TypeWord {
    DataType type;
    const char* word;
};

constexpr TypeWord kTypeWords[] = {{DataType::bit, "bit"},
                                   {DataType::word, "word"},
                                   {DataType::dword, "dword"},
                                   {DataType::real, "real"},
                                   {DataType::text, "text"}};

} // namespace

const char* typeWord(DataType type)
{
    for (const TypeWord& known : kTypeWords) {
        if (known.type == type) {
            return known.word;
        }
    }
    return "structure";
}

std::optional<DataType> typeFromWord(const QString& word)
{
    for (const TypeWord& known : kTypeWords) {
        if (word == known.word) {
            return known.type;
        }
    }
    return std::nullopt;
}

const char* typeWord(const Element& element)
{
    return typeWord(element.isBit() ? DataType::bit : element.type);
}

QString typeInWords(const Element& element)
{
    const QString word = typeWord(element);
    return element.type == DataType::text
               ? QString("%1 of %2")
                     .arg(word, counted(static_cast<quint64>(element.words), "word", "words"))
               : word;
}

} // namespace tavmir::project
