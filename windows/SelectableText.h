#pragma once

#include <QTextEdit>

namespace quorvane::windows {

class Shade;

// Plain text that wraps anywhere, also within words, so that it never makes its window wider; it can be
// selected and copied verbatim with mouse and keyboard. As high as its text needs. User interface thread
// only.
class SelectableText : public QTextEdit {
    Q_OBJECT
public:
    explicit SelectableText(QWidget* parent = nullptr);

    void setText(const QString& text);
    // Sets the shade of the text, which follows the current look. `shade` must outlive this object.
    void setShade(const Shade& shade);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void applyShade();
    void fitHeight();

    const Shade* m_shade;
};

} // namespace quorvane::windows
