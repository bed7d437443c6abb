#pragma once

class QLineEdit;

namespace quorvane::windows {

// Takes out of what is pasted or typed into `field` whatever would end a rule's line in the file, or the
// file: no text of a rule holds that.
void keepToOneLine(QLineEdit& field);

} // namespace quorvane::windows
