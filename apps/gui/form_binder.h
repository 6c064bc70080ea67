// apps/gui/form_binder.h - builds the widgets of the form from the control table and its layout,
// and keeps them and the FormModel in step both ways: the model's notifications move the widgets,
// a person's edits go to the model as the same set_* calls a program would make, and the model's
// change handlers do the rest.
#pragma once
#include <QObject>
#include <QPointer>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "form/control_layout.h"
#include "form/form_model.h"

class QAction;
class QLabel;
class QMenuBar;
class QTabWidget;
class QWidget;

namespace invsetup {
struct Session;
}

namespace invsetup::gui {

class PictureView;

class FormBinder : public QObject {
    Q_OBJECT
public:
    using Key = std::pair<std::string, int>;

    explicit FormBinder(Session& session, QObject* parent = nullptr);
    ~FormBinder() override;

    /// The tab control of the form with its five pages, each built from its layout.
    QTabWidget* build_tabs(QWidget* parent);
    /// The menus of the table, in their order, under `bar`.
    void build_menus(QMenuBar* bar);
    /// The widgets of the tiling layout overlay's frame (built on demand into `parent`).
    QWidget* build_container_widget(const std::string& key, QWidget* parent);

    /// The widget of a control, or nullptr when it has none.
    QWidget* widget(std::string_view name, int index = no_index) const;
    QAction* action(std::string_view name, int index = no_index) const;
    PictureView* picture(std::string_view name, int index = no_index) const;
    const std::map<Key, QWidget*>& widgets() const { return widgets_; }

    /// A widget built by the window stands for a control (the tiling overlay for its frame): it
    /// follows the control's visibility and enabling from the next change on.
    void adopt(std::string_view name, int index, QWidget* widget);
    /// The directory list reads its folders again.
    void refresh_directories();
    /// Brings every widget to the model's state.
    void sync_all();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The caption of the form changed (the window's title).
    void caption_changed(const QString& caption);
    /// A picture control's content changed: its file or its caption.
    void picture_stale(const QString& name, int index);
    /// A person's edit went to the model (and its handlers ran).
    void edited();

private:
    struct SharedCell {
        std::vector<Key> members;  // in layout order; the last visible one shows
    };

    void fill_container(QWidget* host, const std::string& key);
    QWidget* build_control(const Key& key, QWidget* parent);
    QWidget* make_widget(const Control& control, QWidget* parent);
    void connect_widget(const Control& control, QWidget* widget);
    void observe(const Control& control, ControlProperty property);
    void apply(const Control& control, ControlProperty property);
    void apply_visibility(const Key& key);
    void apply_colour(const Control& control, QWidget* widget);
    /// Runs a person's edit against the model: not while a program writes the form, and any fault
    /// shown rather than thrown through Qt.
    template <class Edit>
    void user_edit(const Key& key, Edit edit);

    Session& session_;
    int subscription_ = 0;
    std::map<Key, QWidget*> widgets_;
    std::map<Key, QAction*> actions_;
    std::map<Key, std::vector<QPointer<QLabel>>> captions_;  // captions that stand for a control
    std::map<Key, SharedCell*> shared_of_;
    std::vector<std::unique_ptr<SharedCell>> shared_cells_;
    std::map<QObject*, Key> keys_of_;
    Key last_column_box_{"", no_index};
    bool pushing_ = false;  // model to widgets: the widgets' own signals are not edits
};

/// A colour of the model (0xBBGGRR, or a named system colour) as a Qt colour; invalid for the
/// system colours, which leave the palette alone.
QColor model_colour(std::uint32_t colour);

}  // namespace invsetup::gui
