#include "editor/tplintreport.h"

#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"

TPLintReport::TPLintReport(QObject *parent) : QObject(parent)
{
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &TPLintReport::show);
}

void TPLintReport::setResult(const TPLintResult &result)
{
    m_result = result;
    if (m_result.warnings.isEmpty())
        setListOpen(false);
    show();
}

QString TPLintReport::describe(const TPLintWarning &warning)
{
    if (warning.code == QLatin1String("113"))
        return warning.suggestion.isEmpty()
                   ? TPL("lint_unknown").arg(warning.name)
                   : TPL("lint_did_you_mean").arg(warning.name, warning.suggestion);
    if (warning.code.startsWith(u'2'))
        return TPL("lint_unused").arg(warning.name);
    if (warning.code.startsWith(u'4'))
        return TPL("lint_shadowed").arg(warning.name);
    // The rarer kinds in luacheck's own words.
    return warning.message;
}

void TPLintReport::show()
{
    QList<TPTitledRowsModel::Row> rows;
    m_lines.clear();
    for (const TPLintWarning &warning : std::as_const(m_result.warnings)) {
        rows.append({describe(warning), TPL("editor_outline_line").arg(warning.line)});
        if (!m_lines.contains(warning.line))
            m_lines.append(warning.line);
    }
    m_rows.setRows(rows);
    switch (m_result.status) {
    case TPLintResult::Status::TooLong:
        m_message =
            TPL("lint_too_long").arg(QLocale(TPCurrentLang()).toString(TPLuaCheck::MaxLines));
        break;
    case TPLintResult::Status::TooSlow:
        m_message = TPL("lint_too_slow").arg(TPLuaCheck::MaxMs / 1000);
        break;
    default:
        m_message =
            rows.isEmpty()
                ? QString()
                : TPL("lint_line").arg(m_result.warnings.first().line).arg(rows.first().title);
    }
    emit changed();
}

QString TPLintReport::countText() const
{
    return count() > 0 ? QStringLiteral("⚠ %1").arg(count()) : QString();
}

QString TPLintReport::countName() const
{
    return TPL("lint_count").arg(count());
}

void TPLintReport::setListOpen(bool open)
{
    open = open && count() > 0;
    if (open == m_listOpen)
        return;
    m_listOpen = open;
    emit listOpenChanged();
}

int TPLintReport::lineOfRow(int row) const
{
    return row >= 0 && row < m_result.warnings.size() ? m_result.warnings.at(row).line : 0;
}
