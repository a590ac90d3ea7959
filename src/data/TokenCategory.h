// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// The two categories of voices, and the words that stand for them in the results.
enum class Category { Mother, Stranger };

/// "mother" or "stranger".
QString categoryWord(Category category);

/// The category that @p word stands for, if it is one of the two words.
std::optional<Category> categoryOfWord(const QString &word);

/// The category of the token named @p fileName for the subject @p subCode: a mother's token exactly
/// when its name contains, case-sensitively, the last three characters of the subject code (the
/// whole code when it has three or fewer). An empty code makes every token a mother's.
Category tokenCategory(const QString &fileName, const QString &subCode);
