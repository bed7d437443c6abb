#include "windows/OneLineText.h"

#include <QLineEdit>
#include <QValidator>

#include <algorithm>

namespace quorvane::windows {

namespace {

// True for characters that end a line of a rules file, or the file.
bool endsLine(QChar character)
{
    switch (character.unicode()) {
    case u'\0':
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\r':
    case u'\u0085':
    case u'\u2028':
    case u'\u2029':
        return true;
    default:
        return false;
    }
}

class OneLine : public QValidator {
public:
    using QValidator::QValidator;

    State validate(QString& text, int& cursor) const override
    {
        cursor -= static_cast<int>(std::count_if(text.cbegin(), text.cbegin() + cursor, endsLine));
        text.removeIf(endsLine);
        return Acceptable;
    }
};

} // namespace

void keepToOneLine(QLineEdit& field)
{
    field.setValidator(new OneLine(&field));
}

} // namespace quorvane::windows
