// src/form/form_model.cpp - the toolkit-free form.
#include "form/form_model.h"

#include <stdexcept>

namespace invsetup {

namespace {

std::string control_label(std::string_view name, int index) {
    std::string label(name);
    if (index != no_index) label += "(" + std::to_string(index) + ")";
    return label;
}

}  // namespace

FormModel::FormModel() {
    for (const ControlSpec& entry : form_control_table()) {
        Control control;
        control.declared = &entry;
        if (entry.kind == ControlKind::text_box || entry.kind == ControlKind::rich_text)
            control.text = std::string(entry.text);
        else
            control.caption = std::string(entry.text);
        std::string_view rows = entry.rows;
        while (!rows.empty()) {
            std::size_t end = rows.find('\n');
            control.rows.push_back({std::string(rows.substr(0, end)), 0});
            rows = end == std::string_view::npos ? std::string_view{} : rows.substr(end + 1);
        }
        if (entry.kind == ControlKind::button || entry.kind == ControlKind::check_box ||
            entry.kind == ControlKind::option_button || entry.kind == ControlKind::label)
            control.back_colour = colour_button_face;
        auto [it, inserted] = controls_.emplace(Key{std::string(entry.name), entry.index}, std::move(control));
        if (!inserted) throw std::logic_error("control declared twice: " + control_label(entry.name, entry.index));
        order_.push_back(&it->second);
    }
}

Control& FormModel::find(std::string_view name, int index) const {
    auto it = controls_.find(KeyView{name, index});
    if (it == controls_.end()) throw std::out_of_range("no control " + control_label(name, index));
    return const_cast<Control&>(it->second);
}

bool FormModel::has_control(std::string_view name, int index) const {
    return controls_.find(KeyView{name, index}) != controls_.end();
}
Control& FormModel::control(std::string_view name, int index) { return find(name, index); }
const Control& FormModel::control(std::string_view name, int index) const { return find(name, index); }
std::vector<const Control*> FormModel::controls() const { return order_; }

const std::string& FormModel::text(std::string_view name, int index) const { return find(name, index).text; }

void FormModel::set_text(std::string_view name, int index, std::string value) {
    Control& c = find(name, index);
    if (c.text == value) return;  // an unchanged text raises no change, as in a text box
    c.text = std::move(value);
    notify(c, ControlProperty::value);
    raise_change(name, index);
}

int FormModel::list_index(std::string_view name, int index) const { return find(name, index).list_index; }

void FormModel::set_list_index(std::string_view name, int index, int row) {
    Control& c = find(name, index);
    if (row < -1 || row >= static_cast<int>(c.rows.size()))
        throw std::out_of_range("row " + std::to_string(row) + " outside the list " + control_label(name, index));
    if (c.list_index == row) return;
    c.list_index = row;
    notify(c, ControlProperty::value);
    raise_change(name, index);
}

int FormModel::selected_item_data(std::string_view name, int index) const {
    const Control& c = find(name, index);
    if (c.list_index < 0) return -1;
    return c.rows.at(static_cast<std::size_t>(c.list_index)).item_data;
}

bool FormModel::checked(std::string_view name, int index) const { return find(name, index).checked; }

void FormModel::set_checked(std::string_view name, int index, bool on) {
    Control& c = find(name, index);
    if (c.checked == on) return;
    c.checked = on;
    notify(c, ControlProperty::value);
    raise_change(name, index);
}

void FormModel::set_enabled(std::string_view name, int index, bool on) {
    Control& c = find(name, index);
    if (c.enabled == on) return;
    c.enabled = on;
    notify(c, ControlProperty::enabled);
}

void FormModel::set_visible(std::string_view name, int index, bool on) {
    Control& c = find(name, index);
    if (c.visible == on) return;
    c.visible = on;
    notify(c, ControlProperty::visible);
}

void FormModel::set_caption(std::string_view name, int index, std::string caption) {
    Control& c = find(name, index);
    if (c.caption == caption) return;
    c.caption = std::move(caption);
    notify(c, ControlProperty::caption);
}

void FormModel::set_back_colour(std::string_view name, int index, std::uint32_t colour) {
    Control& c = find(name, index);
    if (c.back_colour == colour) return;
    c.back_colour = colour;
    notify(c, ControlProperty::back_colour);
}

void FormModel::move_to(std::string_view name, int index, int left, int top) {
    Control& c = find(name, index);
    c.left = left;
    c.top = top;
    notify(c, ControlProperty::position);
}

void FormModel::clear_rows(std::string_view name, int index) {
    Control& c = find(name, index);
    c.rows.clear();
    bool had_selection = c.list_index != -1;
    c.list_index = -1;
    notify(c, ControlProperty::rows);
    if (had_selection) notify(c, ControlProperty::value);
}

void FormModel::add_row(std::string_view name, int index, std::string text, int item_data) {
    Control& c = find(name, index);
    c.rows.push_back({std::move(text), item_data});
    notify(c, ControlProperty::rows);
}

int FormModel::row_count(std::string_view name, int index) const {
    return static_cast<int>(find(name, index).rows.size());
}

int FormModel::item_data(std::string_view name, int index, int row) const {
    const Control& c = find(name, index);
    if (row < 0 || row >= static_cast<int>(c.rows.size()))
        throw std::out_of_range("row " + std::to_string(row) + " outside the list " + control_label(name, index));
    return c.rows[static_cast<std::size_t>(row)].item_data;
}

void FormModel::set_item_data(std::string_view name, int index, int row, int item_data) {
    Control& c = find(name, index);
    if (row < 0 || row >= static_cast<int>(c.rows.size()))
        throw std::out_of_range("row " + std::to_string(row) + " outside the list " + control_label(name, index));
    c.rows[static_cast<std::size_t>(row)].item_data = item_data;
}

void FormModel::select_item_data(std::string_view name, int index, int code) {
    set_list_index(name, index, -1);
    const Control& c = find(name, index);
    for (std::size_t row = 0; row < c.rows.size(); ++row) {
        if (c.rows[row].item_data == code) {
            set_list_index(name, index, static_cast<int>(row));
            return;
        }
    }
}

void FormModel::on_change(std::string_view name, ChangeHandler handler) {
    handlers_[std::string(name)] = std::move(handler);
}

void FormModel::raise_change(std::string_view name, int index) {
    auto it = handlers_.find(name);
    if (it != handlers_.end() && it->second) it->second(index);
}

int FormModel::subscribe(Observer observer) {
    observers_.emplace_back(next_observer_, std::move(observer));
    return next_observer_++;
}

void FormModel::unsubscribe(int id) {
    std::erase_if(observers_, [id](const auto& entry) { return entry.first == id; });
}

void FormModel::notify(const Control& control, ControlProperty property) {
    for (const auto& [id, observer] : observers_) observer(control, property);
}

}  // namespace invsetup
