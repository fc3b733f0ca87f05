#include "editing/tpluasyntaxchecker.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

TPLuaSyntaxChecker::TPLuaSyntaxChecker(const QString &chunkName, std::function<QString()> text,
                                       QObject *parent)
    : QObject(parent), m_chunkName(chunkName), m_text(std::move(text))
{
    m_delay.setSingleShot(true);
    m_delay.setInterval(DelayMs);
    connect(&m_delay, &QTimer::timeout, this, &TPLuaSyntaxChecker::checkNow);
}

void TPLuaSyntaxChecker::checkNow()
{
    m_delay.stop();
    const quint64 generation = ++m_generation;
    // The checker is held weakly across the two threads: the result is dropped when the
    // editor has gone meanwhile.
    QPointer<TPLuaSyntaxChecker> self(this);
    QThreadPool::globalInstance()->start([self, generation, name = m_chunkName, text = m_text(),
                                          globals = m_knownGlobals, limit = m_lintTimeLimitMs] {
        const TPLuaSyntaxResult result = TPCheckLuaSyntax(name, text);
        // Each worker thread keeps one luacheck loaded, so that a check pays only for the lint.
        thread_local TPLuaCheck luacheck;
        const TPLintResult lint =
            result.ok() ? luacheck.check(text, globals, limit) : TPLintResult();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, result, lint] {
                if (self)
                    self->onResult(generation, result, lint);
            },
            Qt::QueuedConnection);
    });
}

void TPLuaSyntaxChecker::onResult(quint64 generation, const TPLuaSyntaxResult &result,
                                  const TPLintResult &lint)
{
    if (generation != m_generation)
        return;
    m_result = result;
    m_lint = lint;
    emit checked();
}
