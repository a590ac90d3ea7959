// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/ModalAnswer.h"

#include <QTest>
#include <QWidget>

#include <ctime>
#include <limits>
#include <memory>

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr int smallest = std::numeric_limits<int>::min();
constexpr int largest = std::numeric_limits<int>::max();

/// Calls @p draw with the current second and returns its result. Calls it again when the second has
/// changed meanwhile.
template<typename Draw>
auto withinOneSecond(Draw draw)
{
    while (true) {
        const std::time_t second = std::time(nullptr);
        const auto result = draw(static_cast<unsigned int>(second));
        if (std::time(nullptr) == second)
            return result;
    }
}

/// A test of the signal toolkit. While one of its functions runs, a window is open and, until a box
/// opens, active, so that a box which wrongly took it as its parent would be noticed.
class ToolkitTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_answers = std::make_unique<ModalAnswer>();
    }

    // Catches, in every test function, a box too many or one that did not open.
    void cleanup()
    {
        QCOMPARE(m_answers->problem(), "");
        m_window.reset();
    }

protected:
    /// Expects @p nBoxes boxes.
    void expectBoxes(int nBoxes)
    {
        for (int i = 0; i < nBoxes; ++i)
            m_answers->press(QMessageBox::Ok);
    }

    /// Whether exactly these boxes were shown, by their texts, and as the toolkit shows them: above
    /// all without a parent.
    bool shown(const QStringList &texts) const
    {
        QStringList shownTexts;
        for (const ModalAnswer::Box &box : m_answers->boxes()) {
            if (box.title != "Warning" || box.icon != QMessageBox::Warning ||
                box.buttons != QMessageBox::Ok || box.parent != nullptr)
                return false;
            shownTexts.append(box.text);
        }
        return shownTexts == texts;
    }

private:
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<ModalAnswer> m_answers;
};
