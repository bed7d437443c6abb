#pragma once

#include <QTextEdit>

namespace quorvane::windows {

class Shade;

// Plain text that wraps wherever it must, also within words, so that it never makes its window wider, and
// that mouse and keyboard can select and copy as it is. As high as its text needs.
class SelectableText : public QTextEdit {
    Q_OBJECT
public:
    explicit SelectableText(QWidget* parent = nullptr);

    void setText(const QString& text);
    // The text is in that shade of the present look from now on. `shade` must outlive this.
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
