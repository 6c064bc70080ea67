// apps/gui/form_binder.cpp - the form's widgets from the table, kept in step with the model.
#include "form_binder.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileSystemModel>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <exception>

#include "commands/form_commands.h"
#include "picture_view.h"
#include "session.h"

namespace invsetup::gui {

namespace {

QString q(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

/// Line ends of the model (CR LF) and of Qt's text boxes (LF).
QString shown_text(const std::string& text) { return q(text).replace("\r\n", "\n"); }

/// Captions of the table mark access keys with "&" as Qt does; a literal "&" is doubled.
QString caption_text(const std::string& caption) { return q(caption); }

/// The directory list: folders only, the current one selected.
class DirectoryTree : public QTreeView {
public:
    explicit DirectoryTree(QWidget* parent) : QTreeView(parent) {
        model_ = new QFileSystemModel(this);
        model_->setFilter(QDir::Dirs | QDir::Drives | QDir::NoDotAndDotDot);
        model_->setRootPath(QString());
        setModel(model_);
        for (int column = 1; column < model_->columnCount(); ++column) hideColumn(column);
        header()->hide();
        setMinimumSize(260, 240);
        connect(model_, &QFileSystemModel::directoryLoaded, this, [this](const QString&) {
            if (!pending_.isEmpty()) show_path(pending_);
        });
    }
    QString path_at(const QModelIndex& index) const { return model_->filePath(index); }
    /// Opens the tree down to `path`; the folders are read in the background, so the last step
    /// waits for its parent to be loaded.
    void show_path(const QString& path) {
        pending_ = path;
        const QModelIndex index = model_->index(path);
        if (!index.isValid()) return;
        for (QModelIndex parent = index.parent(); parent.isValid(); parent = parent.parent()) expand(parent);
        setCurrentIndex(index);
        scrollTo(index, QAbstractItemView::PositionAtCenter);
    }
    void refresh() {
        const QString path = model_->filePath(currentIndex());
        model_->setRootPath(QString());
        if (!path.isEmpty()) show_path(path);
    }

private:
    QFileSystemModel* model_;
    QString pending_;
};

/// The two arrows of a spin control.
class UpDown : public QWidget {
public:
    explicit UpDown(QWidget* parent) : QWidget(parent) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        up = new QToolButton(this);
        up->setArrowType(Qt::UpArrow);
        down = new QToolButton(this);
        down->setArrowType(Qt::DownArrow);
        for (QToolButton* button : {up, down}) {
            button->setFixedSize(22, 12);
            button->setAutoRepeat(true);
            layout->addWidget(button);
        }
    }
    QToolButton* up;
    QToolButton* down;
};

bool is_system_colour(std::uint32_t colour) { return (colour & 0x80000000u) != 0; }

}  // namespace

QColor model_colour(std::uint32_t colour) {
    if (is_system_colour(colour)) return {};
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>((colour >> 8) & 0xFF),
                  static_cast<int>((colour >> 16) & 0xFF));
}

FormBinder::FormBinder(Session& session, QObject* parent) : QObject(parent), session_(session) {
    subscription_ = session_.form.subscribe(
        [this](const Control& control, ControlProperty property) { observe(control, property); });
}

FormBinder::~FormBinder() { session_.form.unsubscribe(subscription_); }

QWidget* FormBinder::widget(std::string_view name, int index) const {
    auto it = widgets_.find(Key{std::string(name), index});
    return it == widgets_.end() ? nullptr : it->second;
}

QAction* FormBinder::action(std::string_view name, int index) const {
    auto it = actions_.find(Key{std::string(name), index});
    return it == actions_.end() ? nullptr : it->second;
}

PictureView* FormBinder::picture(std::string_view name, int index) const {
    return qobject_cast<PictureView*>(widget(name, index));
}

template <class Edit>
void FormBinder::user_edit(const Key& key, Edit edit) {
    if (pushing_) return;
    const Control& control = session_.form.control(key.first, key.second);
    if (session_.form.updating_form) {
        // The program is writing the form: the person's edit waits, the widget shows the model.
        apply(control, ControlProperty::value);
        return;
    }
    try {
        edit();
    } catch (const std::exception& fault) {
        session_.dialogue.message_box("An error occurred in " + control_key(key.first, key.second) + ": " + fault.what());
    }
    // Option buttons and the like may have been refused: show what the model holds.
    if (widget(key.first, key.second) != nullptr) apply(session_.form.control(key.first, key.second), ControlProperty::value);
    emit edited();
}

QTabWidget* FormBinder::build_tabs(QWidget* parent) {
    const Control& tabs = session_.form.control("Tab_inversion");
    auto* widget = new QTabWidget(parent);
    widget->setObjectName("Tab_inversion");
    for (std::size_t page = 0; page < tabs.rows.size(); ++page) {
        auto* scroll = new QScrollArea(widget);
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        auto* host = new QWidget(scroll);
        fill_container(host, tab_page_key("Tab_inversion", static_cast<int>(page)));
        scroll->setWidget(host);
        widget->addTab(scroll, q(tabs.rows[page].text));
    }
    const Key key{"Tab_inversion", no_index};
    widgets_[key] = widget;
    keys_of_[widget] = key;
    connect(widget, &QTabWidget::currentChanged, this, [this, key](int page) {
        if (page < 0) return;
        user_edit(key, [this, page] { session_.form.set_list_index("Tab_inversion", page); });
    });
    return widget;
}

void FormBinder::build_menus(QMenuBar* bar) {
    std::map<std::string, QMenu*> menus;
    const std::vector<const Control*> controls = session_.form.controls();
    // A menu is an entry that others name as their parent.
    auto is_parent = [&controls](std::string_view name) {
        for (const Control* c : controls)
            if (c->declared->kind == ControlKind::menu_entry && c->declared->frame == name) return true;
        return false;
    };
    for (const Control* control : controls) {
        const ControlSpec& declared = *control->declared;
        if (declared.kind != ControlKind::menu_entry) continue;
        const Key key{std::string(declared.name), declared.index};
        QMenu* parent = declared.frame.empty() ? nullptr : menus[std::string(declared.frame)];
        if (is_parent(declared.name)) {
            QMenu* menu = parent != nullptr ? parent->addMenu(caption_text(control->caption))
                                            : bar->addMenu(caption_text(control->caption));
            menu->setObjectName(q(declared.name));
            menus[std::string(declared.name)] = menu;
            actions_[key] = menu->menuAction();
            continue;
        }
        if (parent == nullptr) continue;
        QAction* action = control->caption == "-" ? parent->addSeparator() : parent->addAction(caption_text(control->caption));
        action->setObjectName(q(control_key(declared.name, declared.index)));
        action->setVisible(control->visible);
        action->setEnabled(control->enabled);
        actions_[key] = action;
        if (control->caption == "-") continue;
        connect(action, &QAction::triggered, this, [this, key] {
            user_edit(key, [this, key] { session_.form.raise_change(key.first, key.second); });
        });
    }
    if (QAction* save = action("menu_save")) save->setShortcut(QKeySequence::Save);
    if (QAction* read = action("menu_read_file", 0)) read->setShortcut(QKeySequence::Open);
    if (QAction* exit = action("menu_exit")) exit->setShortcut(QKeySequence::Quit);
}

QWidget* FormBinder::build_container_widget(const std::string& key, QWidget* parent) {
    auto* host = new QWidget(parent);
    fill_container(host, key);
    return host;
}

void FormBinder::fill_container(QWidget* host, const std::string& key) {
    const ContainerLayout* layout = find_layout(key);
    if (layout == nullptr) return;

    // One place: a control, several sharing it, or a caption standing for the control beside it.
    auto build_cell = [this, host](const LayoutCell& cell) -> QWidget* {
        if (cell.controls.empty()) {
            auto* label = new QLabel(q(cell.caption), host);
            if (!cell.names.first.empty()) {
                captions_[cell.names].push_back(label);
                if (session_.form.has_control(cell.names.first, cell.names.second))
                    label->setToolTip(q(session_.form.control(cell.names.first, cell.names.second).declared->meaning));
            }
            return label;
        }
        if (cell.controls.size() == 1) return build_control(cell.controls.front(), host);
        auto* holder = new QWidget(host);
        auto* grid = new QGridLayout(holder);
        grid->setContentsMargins(0, 0, 0, 0);
        auto shared = std::make_unique<SharedCell>();
        for (const auto& member : cell.controls) {
            grid->addWidget(build_control(member, holder), 0, 0);
            shared->members.push_back(member);
            shared_of_[member] = shared.get();
        }
        shared_cells_.push_back(std::move(shared));
        return holder;
    };

    if (layout->style == LayoutStyle::grid) {
        auto* grid = new QGridLayout(host);
        grid->setContentsMargins(6, 6, 6, 6);
        grid->setHorizontalSpacing(8);
        grid->setVerticalSpacing(4);
        for (const LayoutCell& cell : layout->cells) {
            QWidget* w = build_cell(cell);
            grid->addWidget(w, cell.row, cell.column, cell.row_span, cell.column_span);
        }
        // A caption's box takes the focus when the caption is clicked or its key pressed.
        for (const LayoutCell& cell : layout->cells) {
            if (!cell.controls.empty() || cell.names.first.empty()) continue;
            QWidget* box = widget(cell.names.first, cell.names.second);
            for (const QPointer<QLabel>& caption : captions_[cell.names])
                if (caption && caption->text() == q(cell.caption) && box != nullptr) caption->setBuddy(box);
        }
        // Captions stay narrow; the boxes take the room.
        bool any_boxes = false;
        for (int column = 0; column < layout->column_count; ++column) {
            bool boxes = false;
            for (const LayoutCell& cell : layout->cells) {
                if (cell.column != column || cell.controls.empty()) continue;
                const ControlKind kind =
                    session_.form.control(cell.controls.back().first, cell.controls.back().second).declared->kind;
                boxes = boxes || kind == ControlKind::text_box || kind == ControlKind::list ||
                        kind == ControlKind::rich_text || kind == ControlKind::picture || kind == ControlKind::frame ||
                        kind == ControlKind::tabs || kind == ControlKind::grid_view || kind == ControlKind::progress_bar;
            }
            grid->setColumnStretch(column, boxes ? 1 : 0);
            any_boxes = any_boxes || boxes;
        }
        // A row of buttons and arrows only keeps together at the left.
        if (!any_boxes) grid->setColumnStretch(layout->column_count, 1);
    } else {
        auto* columns = new QHBoxLayout(host);
        columns->setContentsMargins(8, 8, 8, 8);
        columns->setSpacing(10);
        for (int column = 0; column < layout->column_count; ++column) {
            auto* stack = new QVBoxLayout();
            stack->setSpacing(8);
            bool stretched = false;
            for (int row = 0; row < layout->row_count; ++row) {
                std::vector<const LayoutCell*> items;
                for (const LayoutCell& cell : layout->cells)
                    if (cell.column == column && cell.row == row) items.push_back(&cell);
                if (items.empty()) continue;
                if (items.size() == 1) {
                    QWidget* item = build_cell(*items.front());
                    const bool grows = item->sizePolicy().verticalPolicy() & QSizePolicy::ExpandFlag;
                    stack->addWidget(item, grows ? 1 : 0);
                    stretched = stretched || grows;
                    continue;
                }
                auto* side = new QHBoxLayout();
                for (const LayoutCell* item : items) side->addWidget(build_cell(*item), item->controls.empty() ? 0 : 1);
                stack->addLayout(side);
            }
            if (!stretched) stack->addStretch(1);
            columns->addLayout(stack, 1);
        }
    }
    // Floating controls of this container stand over it, outside the layout.
    for (const Control* control : session_.form.controls()) {
        const ControlSpec& declared = *control->declared;
        if (!is_floating_control(declared.name)) continue;
        const std::string frame(declared.frame);
        if (frame != key) continue;
        QWidget* floating = build_control(Key{std::string(declared.name), declared.index}, host);
        floating->hide();
    }
}

QWidget* FormBinder::build_control(const Key& key, QWidget* parent) {
    const Control& control = session_.form.control(key.first, key.second);
    QWidget* w = make_widget(control, parent);
    w->setObjectName(q(control_key(key.first, key.second)));
    if (!control.declared->meaning.empty()) w->setToolTip(q(control.declared->meaning));
    widgets_[key] = w;
    keys_of_[w] = key;
    connect_widget(control, w);
    pushing_ = true;
    for (ControlProperty property : {ControlProperty::rows, ControlProperty::value, ControlProperty::caption,
                                     ControlProperty::enabled, ControlProperty::back_colour})
        apply(control, property);
    pushing_ = false;
    if (!is_floating_control(key.first)) w->setVisible(control.visible);
    return w;
}

QWidget* FormBinder::make_widget(const Control& control, QWidget* parent) {
    const ControlSpec& declared = *control.declared;
    switch (declared.kind) {
        case ControlKind::text_box:
            if (is_multi_line_control(declared.name)) {
                auto* text = new QPlainTextEdit(parent);
                text->setReadOnly(true);
                text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
                text->setLineWrapMode(QPlainTextEdit::NoWrap);
                text->setMinimumHeight(declared.name == "Text_progress" ? 110 : 160);
                return text;
            } else {
                auto* line = new QLineEdit(parent);
                line->setMinimumWidth(70);
                line->installEventFilter(this);
                return line;
            }
        case ControlKind::rich_text: {
            auto* text = new QPlainTextEdit(parent);
            text->setMinimumHeight(70);
            text->setMaximumHeight(120);
            return text;
        }
        case ControlKind::list: {
            auto* combo = new QComboBox(parent);
            combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
            combo->setMinimumContentsLength(8);
            return combo;
        }
        case ControlKind::check_box: return new QCheckBox(parent);
        case ControlKind::option_button: {
            auto* option = new QRadioButton(parent);
            option->setAutoExclusive(false);  // the model's handlers pair them
            return option;
        }
        case ControlKind::label: {
            auto* label = new QLabel(parent);
            label->setWordWrap(false);
            return label;
        }
        case ControlKind::frame: {
            auto* box = new QGroupBox(parent);
            fill_container(box, control_key(declared.name, declared.index));
            return box;
        }
        case ControlKind::button: {
            auto* button = new QPushButton(parent);
            if (control.caption == "...") {
                button->setFixedWidth(32);
                button->setToolTip("Choose a file");
            }
            button->setAutoDefault(false);
            return button;
        }
        case ControlKind::tabs: {
            auto* tabs = new QTabWidget(parent);
            for (std::size_t page = 0; page < control.rows.size(); ++page) {
                auto* host = new QWidget(tabs);
                fill_container(host, tab_page_key(declared.name, static_cast<int>(page)));
                tabs->addTab(host, q(control.rows[page].text));
            }
            return tabs;
        }
        case ControlKind::picture: return new PictureView(parent);
        case ControlKind::grid_view: {
            auto* table = new QTableWidget(parent);
            table->setMinimumHeight(120);
            return table;
        }
        case ControlKind::progress_bar: {
            auto* bar = new QProgressBar(parent);
            bar->setRange(0, 100);
            bar->setValue(0);
            return bar;
        }
        case ControlKind::status_line: return new QStatusBar(parent);
        case ControlKind::spin: return new UpDown(parent);
        case ControlKind::drive_list: {
            auto* drives = new QComboBox(parent);
            for (const QFileInfo& drive : QDir::drives()) drives->addItem(QDir::toNativeSeparators(drive.absolutePath()));
            return drives;
        }
        case ControlKind::directory_list: return new DirectoryTree(parent);
        case ControlKind::menu_entry: break;
    }
    return new QWidget(parent);
}

void FormBinder::connect_widget(const Control& control, QWidget* w) {
    const ControlSpec& declared = *control.declared;
    const Key key{std::string(declared.name), declared.index};
    FormModel& form = session_.form;
    if (auto* line = qobject_cast<QLineEdit*>(w)) {
        connect(line, &QLineEdit::textEdited, this, [this, key, &form](const QString& text) {
            user_edit(key, [&] { form.set_text(key.first, key.second, text.toStdString()); });
        });
        connect(line, &QLineEdit::editingFinished, this, [this, key] {
            user_edit(key, [&] { leave_control(session_, key.first, key.second); });
        });
    } else if (auto* text = qobject_cast<QPlainTextEdit*>(w); text != nullptr && !text->isReadOnly()) {
        connect(text, &QPlainTextEdit::textChanged, this, [this, key, text, &form] {
            QString value = text->toPlainText();
            value.replace("\n", "\r\n");
            user_edit(key, [&] { form.set_text(key.first, key.second, value.toStdString()); });
        });
    } else if (declared.kind == ControlKind::drive_list) {
        auto* combo = static_cast<QComboBox*>(w);
        connect(combo, &QComboBox::activated, this, [this, key, combo, &form](int) {
            const QString drive = combo->currentText();
            user_edit(key, [&] {
                form.set_text("Drive1", drive.toStdString());
                form.set_text("Dir1", QDir::fromNativeSeparators(drive).toStdString());
            });
        });
    } else if (auto* combo = qobject_cast<QComboBox*>(w)) {
        connect(combo, &QComboBox::activated, this, [this, key, &form](int row) {
            user_edit(key, [&] { form.set_list_index(key.first, key.second, row); });
        });
    } else if (auto* check = qobject_cast<QCheckBox*>(w)) {
        connect(check, &QCheckBox::clicked, this, [this, key, &form](bool on) {
            user_edit(key, [&] { form.set_checked(key.first, key.second, on); });
        });
    } else if (auto* option = qobject_cast<QRadioButton*>(w)) {
        connect(option, &QRadioButton::clicked, this, [this, key, &form](bool) {
            user_edit(key, [&] { form.set_checked(key.first, key.second, true); });
        });
    } else if (auto* button = qobject_cast<QPushButton*>(w)) {
        connect(button, &QPushButton::clicked, this, [this, key, &form] {
            user_edit(key, [&] { form.raise_change(key.first, key.second); });
        });
    } else if (auto* tabs = qobject_cast<QTabWidget*>(w)) {
        connect(tabs, &QTabWidget::currentChanged, this, [this, key, &form](int page) {
            if (page < 0) return;
            user_edit(key, [&] { form.set_list_index(key.first, key.second, page); });
        });
    } else if (auto* tree = dynamic_cast<DirectoryTree*>(w)) {
        connect(tree, &QTreeView::clicked, this, [this, key, tree, &form](const QModelIndex& index) {
            const QString path = tree->path_at(index);
            user_edit(key, [&] { form.set_text("Dir1", QDir::toNativeSeparators(path).toStdString()); });
        });
    } else if (auto* spin = dynamic_cast<UpDown*>(w)) {
        auto step = [this, key](bool up) {
            user_edit(key, [&] { spin_control(session_, key.second, up); });
        };
        connect(spin->up, &QToolButton::clicked, this, [step] { step(true); });
        connect(spin->down, &QToolButton::clicked, this, [step] { step(false); });
    }
}

bool FormBinder::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::MouseButtonPress && type != QEvent::MouseButtonDblClick) return QObject::eventFilter(watched, event);
    auto it = keys_of_.find(watched);
    if (it == keys_of_.end()) return QObject::eventFilter(watched, event);
    const Key key = it->second;
    if (type == QEvent::MouseButtonPress) {
        last_column_box_ = key;
        user_edit(key, [&] { click_control(session_, key.first, key.second); });
    } else {
        user_edit(key, [&] { double_click_control(session_, key.first, key.second); });
    }
    return QObject::eventFilter(watched, event);
}

void FormBinder::observe(const Control& control, ControlProperty property) {
    const bool was_pushing = pushing_;
    pushing_ = true;
    apply(control, property);
    pushing_ = was_pushing;
}

void FormBinder::adopt(std::string_view name, int index, QWidget* w) {
    const Key key{std::string(name), index};
    widgets_[key] = w;
    keys_of_[w] = key;
}

void FormBinder::refresh_directories() {
    if (auto* tree = dynamic_cast<DirectoryTree*>(widget("Dir1"))) tree->refresh();
}

void FormBinder::sync_all() {
    pushing_ = true;
    for (const Control* control : session_.form.controls())
        for (ControlProperty property : {ControlProperty::rows, ControlProperty::value, ControlProperty::caption,
                                         ControlProperty::enabled, ControlProperty::visible, ControlProperty::back_colour})
            apply(*control, property);
    pushing_ = false;
}

void FormBinder::apply_colour(const Control& control, QWidget* w) {
    const QColor colour = model_colour(control.back_colour);
    if (qobject_cast<QPushButton*>(w) != nullptr) {
        w->setStyleSheet(colour.isValid() ? QString("QPushButton { background-color: %1; }").arg(colour.name()) : QString());
        return;
    }
    if (control.declared->kind == ControlKind::text_box || control.declared->kind == ControlKind::list ||
        control.declared->kind == ControlKind::frame)
        return;
    w->setAutoFillBackground(colour.isValid());
    QPalette palette = w->palette();
    palette.setColor(QPalette::Window, colour.isValid() ? colour : w->parentWidget() != nullptr
                                                                       ? w->parentWidget()->palette().color(QPalette::Window)
                                                                       : palette.color(QPalette::Window));
    w->setPalette(palette);
}

void FormBinder::apply_visibility(const Key& key) {
    const FormModel& form = session_.form;
    const Control& control = form.control(key.first, key.second);
    for (const QPointer<QLabel>& caption : captions_[key])
        if (caption) caption->setVisible(control.visible);
    QWidget* w = widget(key.first, key.second);
    if (w == nullptr) return;
    auto shared = shared_of_.find(key);
    if (shared == shared_of_.end()) {
        w->setVisible(control.visible);
        return;
    }
    // Several controls in one place: the last visible one shows.
    bool covered = false;
    const auto& members = shared->second->members;
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        QWidget* member_widget = widget(member->first, member->second);
        const bool visible = form.control(member->first, member->second).visible;
        if (member_widget != nullptr) member_widget->setVisible(visible && !covered);
        covered = covered || visible;
    }
}

void FormBinder::apply(const Control& control, ControlProperty property) {
    const ControlSpec& declared = *control.declared;
    const Key key{std::string(declared.name), declared.index};
    if (declared.kind == ControlKind::menu_entry) {
        QAction* a = action(key.first, key.second);
        if (a == nullptr) return;
        if (property == ControlProperty::visible) a->setVisible(control.visible);
        if (property == ControlProperty::enabled) a->setEnabled(control.enabled);
        if (property == ControlProperty::caption) a->setText(caption_text(control.caption));
        return;
    }
    if (declared.name == "Form_mag3d") {
        if (property == ControlProperty::caption) emit caption_changed(q(control.caption));
        return;
    }
    QWidget* w = widget(key.first, key.second);
    if (property == ControlProperty::enabled) {
        for (const QPointer<QLabel>& caption : captions_[key])
            if (caption) caption->setEnabled(control.enabled);
    }
    if (property == ControlProperty::value && (declared.tab == 1 || declared.tab == 2) && declared.kind == ControlKind::text_box &&
        !is_multi_line_control(declared.name)) {
        // A file or its column definitions changed: the pictures of its tab are drawn again.
        if (declared.name == "Text_data_locations" && declared.index >= 1) emit picture_stale(QStringLiteral("Picture_mag"), declared.index);
        emit picture_stale(declared.tab == 1 ? QStringLiteral("Picture_data_points") : QStringLiteral("Picture_topo_points"),
                           no_index);
    }
    if (w == nullptr) return;

    switch (property) {
        case ControlProperty::visible:
            if (is_floating_control(declared.name)) {
                // Opens over the column box that was clicked, with its list down.
                auto* combo = qobject_cast<QComboBox*>(w);
                QWidget* box = widget(last_column_box_.first, last_column_box_.second);
                if (control.visible && box != nullptr && combo != nullptr) {
                    const QPoint at = box->mapTo(w->parentWidget(), QPoint(0, 0));
                    w->setGeometry(at.x(), at.y(), std::max(box->width(), 140), box->height());
                    w->show();
                    w->raise();
                    w->setFocus();
                    combo->showPopup();
                } else {
                    w->hide();
                }
                return;
            }
            apply_visibility(key);
            return;
        case ControlProperty::enabled: w->setEnabled(control.enabled); return;
        case ControlProperty::back_colour: apply_colour(control, w); return;
        case ControlProperty::position: return;  // the layout places the widgets
        case ControlProperty::rows:
            if (auto* combo = qobject_cast<QComboBox*>(w); combo != nullptr && declared.kind == ControlKind::list) {
                const QSignalBlocker block(combo);
                combo->clear();
                for (const ListRow& row : control.rows) combo->addItem(q(row.text));
                combo->setCurrentIndex(control.list_index);
            } else if (auto* status = qobject_cast<QStatusBar*>(w)) {
                if (status->findChildren<QLabel*>().isEmpty()) {
                    for (std::size_t panel = 0; panel < control.rows.size(); ++panel) {
                        auto* label = new QLabel(q(control.rows[panel].text), status);
                        label->setObjectName(QString("panel%1").arg(panel + 1));
                        label->setMinimumWidth(90);
                        status->addWidget(label, 1);
                    }
                } else {
                    const QList<QLabel*> panels = status->findChildren<QLabel*>();
                    for (qsizetype panel = 0; panel < panels.size() && panel < static_cast<qsizetype>(control.rows.size());
                         ++panel)
                        panels[panel]->setText(q(control.rows[static_cast<std::size_t>(panel)].text));
                }
            }
            return;
        case ControlProperty::caption:
            if (auto* label = qobject_cast<QLabel*>(w)) label->setText(caption_text(control.caption));
            else if (auto* button = qobject_cast<QAbstractButton*>(w)) button->setText(caption_text(control.caption));
            else if (auto* box = qobject_cast<QGroupBox*>(w)) box->setTitle(caption_text(control.caption));
            else if (declared.kind == ControlKind::picture) emit picture_stale(q(declared.name), declared.index);
            return;
        case ControlProperty::value: break;
    }

    const QSignalBlocker block(w);
    if (auto* line = qobject_cast<QLineEdit*>(w)) {
        const QString text = q(control.text);
        if (line->text() != text) line->setText(text);
    } else if (auto* text = qobject_cast<QPlainTextEdit*>(w)) {
        const QString shown = shown_text(control.text);
        if (text->toPlainText() != shown) {
            text->setPlainText(shown);
            if (declared.name == "Text_progress") text->moveCursor(QTextCursor::End);
        }
    } else if (declared.kind == ControlKind::drive_list) {
        auto* combo = static_cast<QComboBox*>(w);
        const int found = combo->findText(QDir::toNativeSeparators(q(control.text)), Qt::MatchFixedString);
        if (found >= 0) combo->setCurrentIndex(found);
    } else if (auto* combo = qobject_cast<QComboBox*>(w)) {
        if (combo->currentIndex() != control.list_index) combo->setCurrentIndex(control.list_index);
    } else if (auto* check = qobject_cast<QAbstractButton*>(w); check != nullptr && check->isCheckable()) {
        check->setChecked(control.checked);
    } else if (auto* tabs = qobject_cast<QTabWidget*>(w)) {
        if (control.list_index >= 0 && control.list_index < tabs->count()) tabs->setCurrentIndex(control.list_index);
    } else if (auto* tree = dynamic_cast<DirectoryTree*>(w)) {
        if (!control.text.empty()) tree->show_path(QDir::fromNativeSeparators(q(control.text)));
    }
}

}  // namespace invsetup::gui
