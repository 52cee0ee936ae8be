// The table of formats is whole, and the pages list what it holds.
#include "project/address_expansion.h"
#include "project/format_table.h"
#include "project/value_format.h"

#include "test_project.h"

#include <QtCore/QFile>

#include <set>

namespace tavmir::project
{

namespace
{

std::string simplifiedFile(const char* name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return QString::fromUtf8(file.readAll()).simplified().toStdString();
}

} // namespace

TEST(FormatTable, NamesEachFormatOnce)
{
    std::set<QString> names;
    std::set<Format> formats;
    for (const FormatRow& row : formatTable()) {
        names.insert(row.name);
        formats.insert(row.format);
        EXPECT_EQ(row.name, formatName(row.format).toStdString());
        EXPECT_EQ(row.format, formatFromName(row.name));
    }
    EXPECT_EQ(formatTable().size(), names.size());
    EXPECT_EQ(formatTable().size(), formats.size());
    EXPECT_EQ(nullptr, formatRow(Format::automatic));
}

TEST(FormatTable, EachElementHasAFormatThatFits)
{
    const Project project = plant();
    for (const Element& element : leafElements(project)) {
        const Format format = effectiveFormat(element, Format::automatic);
        ASSERT_NE(nullptr, formatRow(format));
        EXPECT_TRUE(formatRow(format)->fits(element)) << element.addressText.toStdString();
    }
}

TEST(FormatTable, ThePagesListItsFormats)
{
    const std::string list = formatNames().toStdString();
    EXPECT_NE(std::string::npos,
              simplifiedFile(TAVMIR_HOST_MANUAL)
                  .find("*--as* _FORMAT_: take values as " + list + " (read, write)."));
    const QString marked =
        "`" + formatNames().replace(", ", "`, `").replace(" or ", "` or `") + "`";
    EXPECT_NE(std::string::npos,
              simplifiedFile(TAVMIR_PROJECT_FILE_PAGE).find(marked.toStdString()));
}

} // namespace tavmir::project
