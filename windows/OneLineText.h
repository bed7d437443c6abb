#pragma once

class QLineEdit;

namespace quorvane::windows {

// Removes from text pasted or typed into `field` all characters that would end a rule's line, or the file: no
// text of a rule may contain them.
void keepToOneLine(QLineEdit& field);

} // namespace quorvane::windows
