// apps/gui/picture_view.cpp - a picture control over the core's renderer.
#include "picture_view.h"

#include <QMouseEvent>
#include <QPainter>

namespace invsetup::gui {

QImage to_qimage(const RgbaImage& image) {
    if (image.empty()) return {};
    QImage result(reinterpret_cast<const uchar*>(image.pixels.data()), image.width, image.height, image.width * 4,
                  QImage::Format_RGBA8888);
    return result.copy();
}

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
    setMinimumSize(200, 150);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    settle_.setSingleShot(true);
    settle_.setInterval(300);
    connect(&settle_, &QTimer::timeout, this, [this] { update(); });
}

void PictureView::set_renderer(Renderer render) {
    render_ = std::move(render);
    invalidate();
}

void PictureView::invalidate() {
    stale_ = true;
    settle_.start();
}

void PictureView::render_if_stale() {
    if (!stale_ || settle_.isActive()) return;
    stale_ = false;
    image_ = render_ ? to_qimage(render_(width(), height())) : QImage();
}

void PictureView::resizeEvent(QResizeEvent* event) {
    stale_ = true;
    QWidget::resizeEvent(event);
}

void PictureView::paintEvent(QPaintEvent*) {
    render_if_stale();
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    if (!image_.isNull()) {
        painter.drawImage(0, 0, image_);
    } else if (!toolTip().isEmpty()) {
        // Nothing to show yet: say what would be shown here.
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap, "No " + toolTip());
    }
    if (overlay_) overlay_(painter);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    emit pointer_moved(event->position().x(), event->position().y());
    QWidget::mouseMoveEvent(event);
}

void PictureView::mouseReleaseEvent(QMouseEvent* event) {
    emit released();
    QWidget::mouseReleaseEvent(event);
}

}  // namespace invsetup::gui
