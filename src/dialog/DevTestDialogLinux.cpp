#include "dialog/DevTestDialogLinux.h"

#include "dialog/ClipboardOwner.h"
#include "dialog/GtkApi.h"
#include "input/DeviceNodes.h"
#include "input/InputDeviceComPort.h"
#include "input/InputDeviceHidPos.h"
#include "input/InputDeviceKeyboardFactory.h"
#include "input/PortFamily.h"
#include "util/CharsetConversion.h"
#include "util/SymbolCodecs.h"

namespace {

constexpr size_t kMaxColumnBytes = 1024;
constexpr int kCloseResponse = 1;

std::string capped(std::string text)
{
    if (text.size() > kMaxColumnBytes)
        text.resize(kMaxColumnBytes);
    return text;
}

}  // namespace

DevTestDialogLinux::DevTestDialogLinux(const DeviceSettings& keyboards, const DeviceSettings& ports,
                                       bool isRussian, OutputDataType ioDataType)
    : isRussian(isRussian), keyboards(keyboards), ports(ports), ioDataType(ioDataType)
{
}

DevTestDialogLinux::~DevTestDialogLinux()
{
    StopListening();
}

std::string DevTestDialogLinux::LoadString(STRING_ID id) const
{
    switch (id) {
    case Close: return isRussian ? "Закрыть" : "Close";
    case Clear: return isRussian ? "Очистить" : "Clear";
    case Copy: return isRussian ? "Копировать" : "Copy";
    case Title: return isRussian ? "Тест устройства" : "Device test";
    case Timeout: return isRussian ? "Таймаут" : "Timeout";
    case Busy: return isRussian ? "порт занят другой программой" : "port busy: another program reads it";
    }
    return std::string();
}

std::pair<std::string, std::string> DevTestDialogLinux::formatLine(const std::wstring& sourceName,
                                                                   const std::wstring& data,
                                                                   OutputDataType ioDataType)
{
    std::wstring shown;
    for (wchar_t c : decodeForOutput(data, ioDataType))
        shown += FormatSymbolForDisplay(c);
    // The toolkit takes UTF-8 whatever the process locale is.
    return {capped(wstr2str(sourceName)) + ":", capped(wstr2str(shown))};
}

void DevTestDialogLinux::ShowDlg()
{
    gtk = GtkApi::get();
    if (!gtk)
        return;  // no toolkit or no display: nothing to show
    ListenPorts();
    ListenKeyboardDevices();
    BuildWindow();
    gtk->gtk_widget_show_all(mDlg);
    gtk->gtk_dialog_run(mDlg);

    // Readers stop before the window goes, so no line is handed to a dead list.
    StopListening();
    gtk->gtk_widget_destroy(mDlg);
    // A host that runs no toolkit loop of its own would leave the window on
    // the screen until the next DeviceTest.
    gtk->gdk_flush();
    mDlg = mList = nullptr;
    gtk->g_object_unref(mStore);
    mStore = nullptr;
}

void DevTestDialogLinux::BuildWindow()
{
    mDlg = gtk->gtk_dialog_new();
    gtk->gtk_widget_set_size_request(mDlg, 600, 400);
    gtk->gtk_window_set_modal(mDlg, 1);
    void* scrolled = gtk->gtk_scrolled_window_new(nullptr, nullptr);
    gtk->gtk_scrolled_window_set_policy(scrolled, kGtkPolicyAutomatic, kGtkPolicyAutomatic);
    mList = gtk->gtk_tree_view_new();
    gtk->gtk_widget_set_size_request(scrolled, 500, 350);  // GTK 3 sizes a scrolled list by its window
    gtk->gtk_container_add(scrolled, mList);

    void* row = gtk->gtk_hbox_new(0, 0);
    void* buttons = gtk->gtk_vbox_new(0, 0);
    void* close = gtk->gtk_button_new_with_label(LoadString(Close).c_str());
    void* clear = gtk->gtk_button_new_with_label(LoadString(Clear).c_str());
    void* copy = gtk->gtk_button_new_with_label(LoadString(Copy).c_str());
    gtk->gtk_box_pack_start(row, scrolled, 1, 1, 5);
    for (void* button : {close, clear, copy})
        gtk->gtk_box_pack_start(buttons, button, 0, 1, 5);
    gtk->gtk_box_pack_start(row, buttons, 0, 1, 5);
    gtk->gtk_container_add(gtk->gtk_dialog_get_content_area(mDlg), row);

    InitList();
    using Handler = void (*)();
    gtk->g_signal_connect_data(close, "clicked", reinterpret_cast<Handler>(&OnButtonCloseClicked), this, nullptr, 0);
    gtk->g_signal_connect_data(clear, "clicked", reinterpret_cast<Handler>(&OnButtonClearClicked), this, nullptr, 0);
    gtk->g_signal_connect_data(copy, "clicked", reinterpret_cast<Handler>(&OnButtonCopyClicked), this, nullptr, 0);

    gtk->gtk_window_set_title(mDlg, LoadString(Title).c_str());
}

void DevTestDialogLinux::InitList()
{
    void* renderer = gtk->gtk_cell_renderer_text_new();
    gtk->gtk_cell_renderer_set_fixed_size(renderer, -1, 25);
    for (int column = 0; column < 2; ++column)
        gtk->gtk_tree_view_append_column(
            mList, gtk->gtk_tree_view_column_new_with_attributes("", renderer, "text", column, nullptr));
    mStore = gtk->gtk_list_store_new(2, kGTypeString, kGTypeString);
    gtk->gtk_tree_view_set_model(mList, mStore);
    gtk->gtk_tree_selection_set_mode(gtk->gtk_tree_view_get_selection(mList), kGtkSelectionSingle);
}

std::wstring DevTestDialogLinux::scannerSourceName(const std::wstring& port, const std::string& symbology)
{
    return symbology.empty() ? port : port + L" " + ConvertUTF8Input(symbology.c_str());
}

// Every serial node the machine has, by the number in its name.
void DevTestDialogLinux::ListenPorts()
{
    for (const PortFamily& family : kPortFamilies)
        for (const std::string& path : findDeviceNodes(family.node))
            if (auto port = portNumberOfNode(family, path))
                DoListenPort(*port);
}

void DevTestDialogLinux::DoListenPort(uint32_t port)
{
    const std::wstring name = portShortName(port);
    if (sources.count(name))
        return;
    DeviceSettings settings = ports;
    settings.port = port;
    const PortFamily* family = portFamilyOf(port);
    if (family && family->hidPos) {
        auto scanner = std::make_unique<InputDeviceHidPos>(
            DataCallback(), settings, [this, name](const std::wstring& data, const std::string& symbology) {
                OnInput(scannerSourceName(name, symbology), data);
            });
        if (scanner->start())
            sources.emplace(name, std::move(scanner));
        return;
    }
    // A line another reader holds is listed as busy: its scans go there, not here.
    auto line = std::make_unique<InputDeviceComPort>(
        [this, name](const std::wstring& data) { OnInput(name, data); }, settings);
    if (line->start())
        sources.emplace(name, std::move(line));
    else if (line->busy())
        queueLine({capped(wstr2str(name)) + ":", LoadString(Busy)});
}

void DevTestDialogLinux::ListenKeyboardDevices()
{
    for (const std::string& name : listKeyboardChoices())
        DoListenKeyboardDevice(name);
}

void DevTestDialogLinux::DoListenKeyboardDevice(const std::string& deviceName)
{
    const std::wstring name = ConvertUTF8Input(deviceName.c_str());
    DeviceSettings settings = keyboards;
    settings.keyboardDevice = deviceName;
    Listen(name, InputDeviceKeyboardFactory(), settings);
}

// A source that cannot be had (busy, gone, refused) is simply not listed.
void DevTestDialogLinux::Listen(const std::wstring& name, const InputDeviceFactory& factory,
                                const DeviceSettings& settings)
{
    if (auto source = factory.create(settings, [this, name](const std::wstring& data) { OnInput(name, data); }))
        sources.emplace(name, std::move(source));
}

void DevTestDialogLinux::StopListening()
{
    sources.clear();  // joins every reader
    std::lock_guard<std::mutex> guard(queueLock);
    if (idleSource && gtk)
        gtk->g_source_remove(idleSource);
    idleSource = 0;
    queued.clear();
}

// Runs on a reader thread: the line waits for the window's thread.
void DevTestDialogLinux::OnInput(const std::wstring& sourceName, const std::wstring& data)
{
    if (data.empty())
        return;
    queueLine(formatLine(sourceName, data, ioDataType));
}

void DevTestDialogLinux::queueLine(std::pair<std::string, std::string> line)
{
    std::lock_guard<std::mutex> guard(queueLock);
    queued.push_back(std::move(line));
    if (!idleSource)
        idleSource = gtk->g_idle_add(&takeQueuedLines, this);
}

int DevTestDialogLinux::takeQueuedLines(void* self)
{
    auto* dialog = static_cast<DevTestDialogLinux*>(self);
    std::vector<std::pair<std::string, std::string>> lines;
    {
        std::lock_guard<std::mutex> guard(dialog->queueLock);
        lines.swap(dialog->queued);
        dialog->idleSource = 0;
    }
    for (const auto& [column0, column1] : lines)
        dialog->AddItemToList(column0, column1);
    return 0;  // one-shot: the next line schedules again
}

void DevTestDialogLinux::AddItemToList(const std::string& column0, const std::string& column1)
{
    GtkTreeIter iter{};
    gtk->gtk_list_store_append(mStore, &iter);
    gtk->gtk_list_store_set(mStore, &iter, 0, column0.c_str(), 1, column1.c_str(), -1);
    // The newest line is always the one shown.
    void* path = gtk->gtk_tree_path_new_from_indices(gtk->gtk_tree_model_iter_n_children(mStore, nullptr) - 1, -1);
    gtk->gtk_tree_view_scroll_to_cell(mList, path, nullptr, 0, 0.0f, 0.0f);
    gtk->gtk_tree_view_expand_all(mList);
    gtk->gtk_tree_view_row_activated(mList, path, nullptr);
    gtk->gtk_tree_path_free(path);
}

void DevTestDialogLinux::OnButtonCloseClicked(void*, void* self)
{
    auto* dialog = static_cast<DevTestDialogLinux*>(self);
    dialog->gtk->gtk_dialog_response(dialog->mDlg, kCloseResponse);
}

void DevTestDialogLinux::OnButtonClearClicked(void*, void* self)
{
    auto* dialog = static_cast<DevTestDialogLinux*>(self);
    dialog->gtk->gtk_list_store_clear(dialog->mStore);
}

void DevTestDialogLinux::OnButtonCopyClicked(void*, void* self)
{
    auto* dialog = static_cast<DevTestDialogLinux*>(self);
    const GtkApi* gtk = dialog->gtk;
    void* model = nullptr;
    GtkTreeIter iter{};
    if (!gtk->gtk_tree_selection_get_selected(gtk->gtk_tree_view_get_selection(dialog->mList), &model, &iter))
        return;
    char* text = nullptr;
    gtk->gtk_tree_model_get(model, &iter, 1, &text, -1);
    if (text)
        ClipboardOwner::instance().setText(text);
    gtk->g_free(text);
}
