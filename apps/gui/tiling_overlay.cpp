// apps/gui/tiling_overlay.cpp - the tiling layout overlay painted with QPainter.
#include "tiling_overlay.h"

#include <QEvent>
#include <QLabel>
#include <QMainWindow>
#include <QPainter>
#include <QStatusBar>
#include <QVBoxLayout>

#include "commands/create_commands.h"
#include "commands/form_commands.h"
#include "form/tiling_tab.h"
#include "form_binder.h"
#include "grids/grid_picture.h"
#include "picture_view.h"
#include "session.h"
#include "support/files.h"
#include "support/text.h"

namespace invsetup::gui {

namespace {

QColor line_colour(std::uint32_t colour) {
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>((colour >> 8) & 0xFF),
                  static_cast<int>((colour >> 16) & 0xFF));
}

Qt::PenStyle pen_style(LineStyle style) {
    switch (style) {
        case LineStyle::dotted: return Qt::DotLine;
        case LineStyle::dashed: return Qt::DashLine;
        case LineStyle::solid: break;
    }
    return Qt::SolidLine;
}

}  // namespace

TilingOverlay::TilingOverlay(Session& session, FormBinder& binder, QWidget* parent)
    : QFrame(parent), session_(session), binder_(binder) {
    setObjectName("Frame_tiling_layout");
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(binder_.build_container_widget("Frame_tiling_layout", this));
    binder_.adopt("Frame_tiling_layout", -1, this);
    parent->installEventFilter(this);

    picture_ = binder_.picture("Picture_tiling_layout");
    if (picture_ != nullptr) {
        picture_->setMouseTracking(true);
        picture_->setMinimumSize(480, 360);
        picture_->set_renderer([this](int width, int height) {
            const TilingView& view = session_.tiling_view;
            const std::string name = trim(session_.form.text("Text_image_file"));
            RgbaImage image(width, height);
            if (!(view.view_x_max > view.view_x_min) || !(view.view_y_max > view.view_y_min)) return image;
            if (name.empty()) {
                // No background grid: the readings of the observed data, where the plan puts them.
                if (!readings_) readings_ = load_data_picture(session_, 0);
                if (!readings_->x.empty()) {
                    const PictureFrame frame = fit_picture_frame(view.view_x_min, view.view_x_max, view.view_y_min,
                                                                 view.view_y_max, width, height, 10.0);
                    std::vector<double> x = readings_->x, y = readings_->y;
                    mesh_points_to_view(view, x, y);
                    paint_points(x, y, readings_->values, frame, ColourTable::spectrum(), image, 2);
                }
                return image;
            }
            PictureFrame frame;
            render_grid_picture(resolve_path(session_.working_directory, name).string(), view.view_x_min,
                                view.view_x_max, view.view_y_min, view.view_y_max, width, height, 10.0, image, frame);
            return image;
        });
        picture_->set_overlay([this](QPainter& painter) {
            painter.setRenderHint(QPainter::Antialiasing, false);
            for (const ViewLine& line : session_.tiling_view.lines) {
                QPen pen(line_colour(line.colour));
                pen.setWidth(line.width);
                pen.setStyle(pen_style(line.style));
                painter.setPen(pen);
                painter.drawLine(QPointF(line.x1, line.y1), QPointF(line.x2, line.y2));
            }
        });
        connect(picture_, &PictureView::pointer_moved, this, [this](double x, double y) {
            if (session_.tiling_view.view_scale <= 0) return;
            tiling_pointer_move(session_, x, y);
            show_panels();
        });
        connect(picture_, &PictureView::released, this, [this] { tiling_mouse_up(session_); });
        picture_->installEventFilter(this);
    }
    // A spin arrow, a tile mark or the region list changed the plan: paint it again.
    connect(&binder_, &FormBinder::edited, this, [this] {
        if (!isVisible() || picture_ == nullptr) return;
        picture_->invalidate();
        picture_->update();
        show_panels();
    });
    hide();
}

void TilingOverlay::fit_to_parent() {
    // Over the form's tabs, below the menu bar.
    auto* window = qobject_cast<QMainWindow*>(parentWidget());
    if (window != nullptr && window->centralWidget() != nullptr)
        setGeometry(window->centralWidget()->geometry());
    else if (parentWidget() != nullptr)
        setGeometry(parentWidget()->rect());
}

void TilingOverlay::showEvent(QShowEvent* event) {
    readings_.reset();  // the data may have changed since the last view
    fit_to_parent();
    raise();
    for (int index : {0, 1, 2, 3, 10, 11})
        if (QWidget* spin = binder_.widget("UpDown_clip", index)) {
            const std::string tip = spin_tip(session_, index);
            if (!tip.empty()) spin->setToolTip(QString::fromStdString(tip));
        }
    QFrame::showEvent(event);
    redraw();
}

bool TilingOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize) fit_to_parent();
    if (watched == picture_ && event->type() == QEvent::Resize && isVisible()) redraw();
    return QFrame::eventFilter(watched, event);
}

void TilingOverlay::redraw() {
    if (picture_ == nullptr) return;
    TilingView& view = session_.tiling_view;
    const double width = picture_->width(), height = picture_->height();
    if (view.width != width || view.height != height) {
        view.width = width;
        view.height = height;
        if (view.view_scale > 0) display_tiling_layout(session_, 1);
    }
    picture_->invalidate();
    show_panels();
}

void TilingOverlay::show_panels() {
    auto* status = qobject_cast<QStatusBar*>(binder_.widget("StatusBar_coords"));
    if (status == nullptr) return;
    const QList<QLabel*> panels = status->findChildren<QLabel*>();
    for (qsizetype i = 0; i < panels.size() && i < static_cast<qsizetype>(session_.tiling_view.panels.size()); ++i)
        panels[i]->setText(QString::fromStdString(session_.tiling_view.panels[static_cast<std::size_t>(i)]));
}

}  // namespace invsetup::gui
