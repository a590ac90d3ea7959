// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/TokenCategory.h"

using namespace Qt::StringLiterals;

QString categoryWord(Category category)
{
    return category == Category::Mother ? u"mother"_s : u"stranger"_s;
}

std::optional<Category> categoryOfWord(const QString &word)
{
    for (const Category category : {Category::Mother, Category::Stranger}) {
        if (categoryWord(category) == word)
            return category;
    }
    return std::nullopt;
}

Category tokenCategory(const QString &fileName, const QString &subCode)
{
    const QString key = subCode.right(3);
    return fileName.contains(key, Qt::CaseSensitive) ? Category::Mother : Category::Stranger;
}
