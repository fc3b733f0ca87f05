#pragma once

#include <QStringList>
#include <QTextBlock>
#include <QTextDocument>

// A text document's own text: its blocks joined by U+2029, every character as stored.
inline QString TPRawDocumentText(const QTextDocument &document)
{
    QStringList blocks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        blocks.append(block.text());
    return blocks.join(QChar::ParagraphSeparator);
}
