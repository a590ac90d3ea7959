// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SilentSession.h"

#include "subject/SubjectWindow.h"
#include "support/ModalAnswer.h"
#include "support/WavFile.h"

#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>

SilentSession::SilentSession(int nTokens, int nTimes)
    : m_nTokens(nTokens)
    , m_nTimes(nTimes)
{
}

QString SilentSession::tokenName(int token)
{
    QString number = QString("%1").arg(token, 6, 10, QChar('0'));
    for (QChar &digit : number) // letters, or the number 1 would be in the code's place
        digit = QChar('a' + digit.digitValue());
    return QString("%1_MOV00%2.wav").arg(number).arg(isMother(token) ? 1 : 2);
}

bool SilentSession::prepare(OperatorWindow &window) const
{
    if (!QDir().mkpath(path("tokens")))
        return false;
    for (int token = 0; token < m_nTokens; ++token) {
        const QByteArray data = WavBytes::little(static_cast<std::uint32_t>(token), 2).repeated(96);
        if (!writeFile(path("tokens/" + tokenName(token)), WavBytes{.data = data}.bytes()))
            return false;
    }
    window.lineEditNTimes->setText(QString::number(m_nTimes));
    window.checkBoxFeedBack->setChecked(false);
    ModalAnswer answers;
    answers.choose(path("tokens"));
    window.pushButtonPractice->click();
    if (!answers.problem().isEmpty() || window.randomSequence.size() != nTrials())
        return false;
    window.reactionTimer->start();
    window.updateMainwindow(ReadyResponse);
    window.presentationTimer.stop();
    return true;
}

void SilentSession::answer(OperatorWindow &window, bool mother)
{
    window.updateMainwindow(mother ? MotherResponse : StrangerResponse);
    window.presentationTimer.stop();
}
