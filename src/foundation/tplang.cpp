#include "foundation/tplang.h"

#include <QLocale>
#include <QSettings>

namespace {

struct TPLangRow
{
    const char *key;
    const char *vi;
    const char *en;
};

// Every text the user sees, in the order the keys were introduced.
constexpr TPLangRow kRows[] = {
    {"tab_scripts", "Scripts", "Scripts"},
    {"tab_store", "Kho", "Store"},
    {"tab_settings", "Cài đặt", "Settings"},
    {"store_coming", "Kho — sắp có", "Store — coming soon"},
    {"btn_save", "Lưu", "Save"},
    {"btn_run", "Chạy", "Run"},
    {"alert_ok", "OK", "OK"},
    {"alert_error", "Lỗi", "Error"},
    {"alert_saved", "Đã lưu", "Saved"},
    {"alert_ran", "Đã chạy", "Ran"},
    {"err_offline", "Engine offline (:8090)", "Engine offline (:8090)"},
    {"err_run_fail", "Không chạy được (engine offline?)", "Failed to run (engine offline?)"},
    {"err_save_fail", "Lưu thất bại (engine offline?)", "Save failed (engine offline?)"},
    {"new_file", "File mới", "New File"},
    {"new_folder", "Folder mới", "New Folder"},
    {"cancel", "Huỷ", "Cancel"},
    {"create", "Tạo", "Create"},
    {"err_bad_name", "Tên không hợp lệ", "Invalid name"},
    {"menu_rename", "Đổi tên", "Rename"},
    {"menu_delete", "Xoá", "Delete"},
    {"ph_file_name", "ten.lua", "name.lua"},
    {"ph_folder_name", "ten_folder", "folder_name"},
    {"set_alert_error", "Cảnh báo khi script lỗi", "Alert on script error"},
    {"set_vibrate_error", "Rung khi script lỗi", "Vibrate on script error"},
    {"set_toast_startstop", "Toast khi bắt đầu/dừng", "Toast on start/stop"},
    {"set_vibrate_startstop", "Rung khi bắt đầu/dừng", "Vibrate on start/stop"},
    {"set_debug_touch", "Hiện điểm chạm (debug)", "Show touch point (debug)"},
    {"set_touch_color", "Màu điểm chạm", "Touch point color"},
    {"set_touch_size", "Kích thước", "Size"},
    {"set_touch_opacity", "Độ mờ", "Opacity"},
    {"set_toast_pos", "Vị trí Toast", "Toast Position"},
    {"pos_top", "Trên", "Top"},
    {"pos_center", "Giữa", "Center"},
    {"pos_bottom", "Dưới", "Bottom"},
    {"section_connection", "Kết nối", "Connection"},
    {"section_language", "Ngôn ngữ", "Language"},
    {"section_options", "Tuỳ chọn", "Options"},
    {"row_device_ip", "Device IP", "Device IP"},
    {"row_open_ide", "Mở Web IDE", "Open Web IDE"},
    {"row_language", "Ngôn ngữ hiển thị", "Display language"},
    {"na", "N/A", "N/A"},
    {"copied", "Đã copy", "Copied"},
    {"lang_vi", "Tiếng Việt", "Vietnamese"},
    {"lang_en", "English", "English"},
    {"owner_prompt_title", "Đặt tên định danh máy", "Set device name"},
    {"owner_prompt_msg", "Nhập tên để nhận diện máy này (vd: Tavo)",
     "Enter a name to identify this device (e.g. Tavo)"},
    {"owner_prompt_ph", "Tên của bạn", "Your name"},
    {"row_owner_name", "Tên máy", "Device name"},
    {"rename_owner_title", "Đổi tên máy", "Rename device"},
};

// Texts of the editor's tools, beyond the described screens.
constexpr TPLangRow kExtraRows[] = {
    {"editor_undo", "Hoàn tác", "Undo"},
    {"editor_redo", "Làm lại", "Redo"},
    {"editor_find", "Tìm", "Find"},
    {"editor_wrap", "Ngắt dòng", "Wrap"},
    {"editor_symbols", "Phím ký hiệu", "Symbol keys"},
    {"editor_outline", "Các hàm", "Outline"},
    {"menu_move", "Di chuyển…", "Move…"},
    {"menu_favourite_add", "Thêm vào yêu thích", "Add to favourites"},
    {"menu_favourite_remove", "Bỏ yêu thích", "Remove from favourites"},
    {"editor_favourite", "Yêu thích", "Favourite"},
    {"quickopen_title", "Mở nhanh", "Quick open"},
    {"quickopen_placeholder", "Gõ vài chữ trong tên file", "Type a few letters of a file"},
    {"quickopen_favourites", "Yêu thích", "Favourites"},
    {"quickopen_recents", "Mở gần đây", "Recently opened"},
    {"menu_duplicate", "Nhân bản", "Duplicate"},
    {"move_title", "Chuyển tới", "Move to"},
    {"editor_outline_line", "Dòng %1", "Line %1"},
    {"editor_outline_empty", "Không có hàm nào", "No functions"},
    {"editor_loading", "Đang tải…", "Loading…"},
    {"editor_unsaved", "Chưa lưu", "Unsaved changes"},
    {"editor_line_numbers", "Số dòng", "Line numbers"},
    {"editor_syntax_error", "Lỗi cú pháp", "Syntax error"},
    {"find_placeholder", "Tìm", "Find"},
    {"replace_placeholder", "Thay bằng", "Replace with"},
    {"find_regex", "Biểu thức chính quy", "Regular expression"},
    {"find_case", "Phân biệt hoa thường", "Match case"},
    {"find_case_glyph", "Aa", "Aa"},
    {"find_next", "Tiếp", "Next"},
    {"find_previous", "Trước", "Previous"},
    {"find_replace", "Thay", "Replace"},
    {"find_replace_all", "Thay tất cả", "Replace All"},
    {"find_close", "Đóng", "Close"},
    {"find_replaced_count", "Đã thay %1", "Replaced %1"},
    {"goto_placeholder", "Dòng", "Line"},
    {"goto_go", "Đến", "Go"},
    {"key_tab", "Tab", "Tab"},
    {"key_indent", "Thụt vào", "Indent"},
    {"key_outdent", "Thụt ra", "Outdent"},
    {"list_search", "Tìm theo tên", "Search by name"},
    {"list_refresh", "Làm mới", "Refresh"},
    {"list_add", "Thêm", "Add"},
    {"list_no_matches", "Không có kết quả", "No matches"},
    {"list_clear_search", "Xoá tìm kiếm", "Clear search"},
    {"row_more", "Tuỳ chọn khác", "More actions"},
    {"swatch_red", "Đỏ", "Red"},
    {"swatch_orange", "Cam", "Orange"},
    {"swatch_yellow", "Vàng", "Yellow"},
    {"swatch_green", "Xanh lá", "Green"},
    {"swatch_blue", "Xanh dương", "Blue"},
    {"swatch_purple", "Tím", "Purple"},
    {"swatch_white", "Trắng", "White"},
    {"swatch_black", "Đen", "Black"},
    {"row_unreachable", "Tên có dấu cách hoặc chữ có dấu: engine không mở được qua địa chỉ",
     "Name has a space or accented letter: the engine cannot open it by address"},
    {"guard_replace_title", "Thay thế %1?", "Replace %1?"},
    {"guard_replace", "Thay thế", "Replace"},
    {"guard_exists", "Đã có “%1” trong thư mục này", "“%1” already exists in this folder"},
    {"draft_found", "Thay đổi chưa lưu từ %1", "Unsaved changes from %1"},
    {"draft_restore", "Khôi phục", "Restore"},
    {"draft_discard", "Bỏ", "Discard"},
    {"read_failed", "Không đọc được file này", "The file could not be read"},
    {"read_retry", "Thử lại", "Retry"},
    {"read_not_text", "File này không phải văn bản UTF-8 nên không hiện được ở đây",
     "This file is not UTF-8 text and cannot be shown here"},
    {"history_title", "Lịch sử", "History"},
    {"history_deleted", "đã xoá", "deleted"},
    {"history_empty", "Chưa có phiên bản nào", "No versions yet"},
    {"history_bytes", "%1 byte", "%1 bytes"},
    {"history_lines_vs_editor", "+%1 −%2 so với trình soạn thảo", "+%1 −%2 vs. the editor"},
    {"history_lines_vs_newest", "+%1 −%2 so với bản mới nhất", "+%1 −%2 vs. the newest version"},
    {"history_restored", "Đã khôi phục", "Restored"},
    {"history_save_version", "Lưu phiên bản này lên engine?", "Save this version to the engine?"},
    {"undo_deleted", "Đã xoá %1", "Deleted %1"},
    {"undo_action", "Hoàn tác", "Undo"},
    {"version_text", "Nội dung", "Text"},
    {"version_changes", "Khác biệt", "Changes"},
    {"diff_legend_editor", "− chỉ ở bản %1 · + chỉ ở trình soạn thảo",
     "− only in %1 · + only in the editor"},
    {"diff_legend_newest", "− chỉ ở bản %1 · + chỉ ở bản mới nhất",
     "− only in %1 · + only in the newest"},
    {"diff_folded", "⋯ %1 dòng không đổi", "⋯ %1 unchanged lines"},
    {"diff_none", "Không có khác biệt", "No differences"},
    {"lint_line", "Dòng %1: %2", "Line %1: %2"},
    {"lint_unused", "`%1` không được dùng", "`%1` is never used"},
    {"lint_unknown", "`%1` chưa được biết", "`%1` is not known"},
    {"lint_did_you_mean", "`%1` chưa được biết; có phải ý bạn là `%2`?",
     "`%1` is not known; did you mean `%2`?"},
    {"lint_shadowed", "`%1` che một biến cùng tên", "`%1` hides another variable of the same name"},
    {"lint_count", "%1 cảnh báo", "%1 warnings"},
    {"lint_too_long", "Không kiểm tra: hơn %1 dòng", "Not checked: over %1 lines"},
    {"lint_too_slow", "Không kiểm tra: quá %1 giây", "Not checked: took over %1 s"},
    {"editor_warnings", "Cảnh báo", "Warnings"},
    {"replace_unread", "File này chưa được đọc. Thay nó trên engine bằng nội dung đang hiện?",
     "This file was not read. Replace it on the engine with the text shown?"},
    {"search_title", "Tìm trong mọi file", "Search in all files"},
    {"search_reading", "Đang đọc file %1/%2…", "Reading files: %1 of %2…"},
    {"search_summary", "%1 kết quả trong %2 file", "%1 matches in %2 files"},
    {"search_no_matches", "Không tìm thấy", "No matches"},
    {"search_invalid", "Biểu thức chính quy không hợp lệ", "Not a valid regular expression"},
    {"search_file_count", "%1 kết quả", "%1 matches"},
    {"search_more", "… và %1 kết quả nữa", "… and %1 more matches"},
    {"search_unread", "Không đọc được", "Could not be read"},
    {"search_retry", "Thử lại", "Retry"},
    {"search_not_text", "Không phải văn bản UTF-8: không tìm, không thay",
     "Not UTF-8 text: not searched, never changed"},
    {"search_listing_failed", "Không tải được danh sách file",
     "The list of files could not be read"},
    {"search_replace_all", "Thay tất cả…", "Replace all…"},
    {"replace_preview_title", "Xem trước thay thế", "Replace preview"},
    {"replace_file_count", "%1 chỗ thay", "%1 replacements"},
    {"replace_unsaved", "Đang mở với thay đổi chưa lưu: bỏ qua",
     "Open with unsaved changes: left out"},
    {"replace_apply", "Thay", "Replace"},
    {"replace_applying", "Đang thay %1/%2…", "Replacing %1 of %2…"},
    {"replace_done", "Đã thay %1 chỗ trong %2 file.", "Replaced %1 matches in %2 files."},
    {"replace_changed", "Đã đổi từ lúc đọc, bỏ qua: %1",
     "Changed since it was read, left alone: %1"},
    {"replace_failed", "Không lưu được: %1", "Could not be saved: %1"},
    {"replace_include", "Thay trong file này", "Replace in this file"},
    {"marker_preview", "Xem trước điểm chạm: %1 pt, %2%", "Touch marker preview: %1 pt, %2%"},
};

template <size_t N>
TPLangTableMap buildTable(const TPLangRow (&rows)[N])
{
    TPLangTableMap table;
    table.reserve(N);
    for (const TPLangRow &row : rows) {
        table.insert(QString::fromUtf8(row.key),
                     TPLangEntry{{QStringLiteral("vi"), QString::fromUtf8(row.vi)},
                                 {QStringLiteral("en"), QString::fromUtf8(row.en)}});
    }
    return table;
}

} // namespace

const TPLangTableMap &TPLangTable()
{
    // A function-local static is initialised exactly once, even when threads race to it.
    static const TPLangTableMap table = buildTable(kRows);
    return table;
}

const TPLangTableMap &TPLangExtraTable()
{
    static const TPLangTableMap table = buildTable(kExtraRows);
    return table;
}

QString TPLDateTime(const QDateTime &time)
{
    const QLocale locale(TPCurrentLang() == QLatin1String("en") ? QLocale::English
                                                                : QLocale::Vietnamese);
    // The language's short date with the whole year (a kept version may be years old), and
    // the time on a 24-hour clock in both.
    QString dateFormat = locale.dateFormat(QLocale::ShortFormat);
    if (!dateFormat.contains(QLatin1String("yyyy")))
        dateFormat.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    const QDateTime local = time.toLocalTime();
    return locale.toString(local.date(), dateFormat) + u' ' +
           local.time().toString(QStringLiteral("HH:mm"));
}

QString TPCurrentLang()
{
    const QString stored = QSettings().value(QLatin1String(TPLangKey)).toString();
    return stored.isEmpty() ? QStringLiteral("vi") : stored;
}

QString TPL(const QString &key)
{
    const TPLangTableMap &table = TPLangTable();
    auto entry = table.constFind(key);
    if (entry == table.constEnd()) {
        entry = TPLangExtraTable().constFind(key);
        if (entry == TPLangExtraTable().constEnd())
            return key;
    }
    const auto text = entry->constFind(TPCurrentLang());
    return text == entry->constEnd() ? key : *text;
}
