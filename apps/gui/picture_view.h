// apps/gui/picture_view.h - a picture control: shows an image that the core renders for the
// control's size, drawn again when the size changes or the content is marked stale.
#pragma once
#include <QImage>
#include <QTimer>
#include <QWidget>
#include <functional>

class QPainter;

#include "grids/grid_picture.h"

namespace invsetup::gui {

/// The core's RGBA image as a QImage (a copy).
QImage to_qimage(const RgbaImage& image);

class PictureView : public QWidget {
    Q_OBJECT
public:
    /// `render` draws the picture for a size; an empty image leaves the view blank.
    using Renderer = std::function<RgbaImage(int width, int height)>;
    explicit PictureView(QWidget* parent = nullptr);
    void set_renderer(Renderer render);
    /// The content changed: draw again when next shown, once the changes have settled (typing in a
    /// column box reads the file once, not at every key).
    void invalidate();
    const QImage& image() const { return image_; }
    /// Drawn over the picture (the plan of the tiling view).
    void set_overlay(std::function<void(QPainter&)> overlay) {
        overlay_ = std::move(overlay);
        update();
    }

signals:
    /// The pointer moved over the picture (tracked while the view has an overlay).
    void pointer_moved(double x, double y);
    /// A mouse button came up over the picture.
    void released();

public:
    QSize sizeHint() const override { return {320, 240}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void render_if_stale();
    Renderer render_;
    QImage image_;
    bool stale_ = true;
    QTimer settle_;
    std::function<void(QPainter&)> overlay_;
};

}  // namespace invsetup::gui
