#pragma once
// The toolkit functions the test window needs, resolved at run time so that
// loading the add-in never drags a toolkit into the host. GTK 2 and GTK 3
// cannot share a process (their types clash in one GLib type system), so a
// host that already runs GTK 3 gets its own toolkit used; otherwise GTK 2 is
// loaded. Every function used here has the same signature in both.
#include "util/RuntimeLibrary.h"

struct GtkTreeIter {
    int stamp;
    void* user_data;
    void* user_data2;
    void* user_data3;
};

#define RAVLIN_GTK_FUNCTIONS(X)                                                              \
    X(int, gtk_init_check, (int*, char***))                                                  \
    X(void*, gdk_display_get_default, (void))                                                \
    X(void, gdk_flush, (void))                                                               \
    X(void*, gtk_dialog_new, (void))                                                         \
    X(void*, gtk_dialog_get_content_area, (void*))                                           \
    X(int, gtk_dialog_run, (void*))                                                          \
    X(void, gtk_dialog_response, (void*, int))                                               \
    X(void, gtk_window_set_modal, (void*, int))                                              \
    X(void, gtk_window_set_title, (void*, const char*))                                      \
    X(void, gtk_widget_set_size_request, (void*, int, int))                                  \
    X(void, gtk_widget_show_all, (void*))                                                    \
    X(void, gtk_widget_destroy, (void*))                                                     \
    X(void*, gtk_scrolled_window_new, (void*, void*))                                        \
    X(void, gtk_scrolled_window_set_policy, (void*, int, int))                               \
    X(void, gtk_container_add, (void*, void*))                                               \
    X(void*, gtk_hbox_new, (int, int))                                                       \
    X(void*, gtk_vbox_new, (int, int))                                                       \
    X(void, gtk_box_pack_start, (void*, void*, int, int, unsigned))                          \
    X(void*, gtk_button_new_with_label, (const char*))                                       \
    X(void*, gtk_tree_view_new, (void))                                                      \
    X(void, gtk_tree_view_set_model, (void*, void*))                                         \
    X(int, gtk_tree_view_append_column, (void*, void*))                                      \
    X(void*, gtk_tree_view_get_selection, (void*))                                           \
    X(void, gtk_tree_view_scroll_to_cell, (void*, void*, void*, int, float, float))          \
    X(void, gtk_tree_view_expand_all, (void*))                                               \
    X(void, gtk_tree_view_row_activated, (void*, void*, void*))                              \
    X(void*, gtk_tree_view_column_new_with_attributes, (const char*, void*, ...))            \
    X(void*, gtk_cell_renderer_text_new, (void))                                             \
    X(void, gtk_cell_renderer_set_fixed_size, (void*, int, int))                             \
    X(void*, gtk_list_store_new, (int, ...))                                                 \
    X(void, gtk_list_store_append, (void*, GtkTreeIter*))                                    \
    X(void, gtk_list_store_set, (void*, GtkTreeIter*, ...))                                  \
    X(void, gtk_list_store_clear, (void*))                                                   \
    X(int, gtk_tree_model_iter_n_children, (void*, GtkTreeIter*))                            \
    X(void, gtk_tree_model_get, (void*, GtkTreeIter*, ...))                                  \
    X(void*, gtk_tree_path_new_from_indices, (int, ...))                                     \
    X(void, gtk_tree_path_free, (void*))                                                     \
    X(void, gtk_tree_selection_set_mode, (void*, int))                                       \
    X(int, gtk_tree_selection_get_selected, (void*, void**, GtkTreeIter*))                   \
    X(unsigned long, g_signal_connect_data, (void*, const char*, void (*)(), void*, void*, int)) \
    X(unsigned, g_idle_add, (int (*)(void*), void*))                                         \
    X(int, g_source_remove, (unsigned))                                                      \
    X(void, g_object_unref, (void*))                                                         \
    X(void, g_free, (void*))

struct GtkApi {
    RAVLIN_FUNCTION_TABLE(RAVLIN_GTK_FUNCTIONS)

    // The toolkit ready to use on the calling thread, or null when there is no
    // toolkit or no display. Loaded once; see GtkApi.cpp for what unloading
    // the add-in leaves of it.
    static const GtkApi* get();
};

constexpr unsigned long kGTypeString = 16 << 2;  // G_TYPE_STRING, a fundamental type
constexpr int kGtkPolicyAutomatic = 1;
constexpr int kGtkSelectionSingle = 1;
