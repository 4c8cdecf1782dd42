#include "tooltips/manual_placeholder.h"

#include <QTextCodec>
#include <fstream>

#include "lmlib/tree_item.h"

namespace {

constexpr const char *ManualPlaceholder = "%MANUAL%";
constexpr const char *OnlineManual = "https://manual.vistrel.example";

PlaceholderTable &placeholderTable() {
    static PlaceholderTable table;
    return table;
}

// The table's texts are UTF-8, but the library's texts are in the local encoding. A text that is already valid UTF-8 is
// not converted, because the conversion would lose characters if the locale is the C locale. Other texts are converted.
std::string utf8FromLocal8Bit(const std::string &text) {
    QTextCodec::ConverterState state;
    const int size = static_cast<int>(text.size());
    QTextCodec::codecForName("UTF-8")->toUnicode(text.data(), size, &state);
    if (state.invalidChars == 0 && state.remainingChars == 0) {
        return text;
    }
    return QString::fromLocal8Bit(text.data(), size).toUtf8().toStdString();
}

std::string localManual() {
    const std::string folder = TreeItem()["Path"]["Manual"].asStringUnchecked();
    if (folder.empty() || !std::ifstream(folder + "/index.html")) {
        return {};
    }
    // The folder is intentionally appended unchanged. If it begins with "/", the address has four slashes, but it still
    // names the same file.
    return "file:///" + utf8FromLocal8Bit(folder);
}

}  // namespace

Placeholder makeManualPlaceholder() {
    const std::string local = localManual();
    return {ManualPlaceholder, local.empty() ? OnlineManual : local};
}

void setPlaceholderTable(PlaceholderTable table) {
    placeholderTable() = std::move(table);
}

QString replacePlaceholders(QString text) {
    for (const auto &[placeholder, replacement] : placeholderTable()) {
        text.replace(QString::fromStdString(placeholder), QString::fromStdString(replacement), Qt::CaseSensitive);
    }
    return text;
}
