#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <string>
#include <vector>

#include "definitions/ddf_reader.h"
#include "definitions/record_lists.h"

namespace tarnova {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::size_t fieldLineLimit = 81;  // a line of the field list stays below, its indentation not counted
constexpr std::size_t hexLineDigits = 80;
constexpr std::size_t writeBufferSize = 16384;  // bytes

/// Collects text and hands it to the target in large pieces. The first error stays and stops everything after it.
class DdfWriter {
 public:
    DdfWriter(const ddfTargetRec& target, errorWord priorError)
        : target_(target), handleUsed_(handleSize(target.handle)), error_(priorError) {}
    DdfWriter(const DdfWriter&) = delete;
    DdfWriter& operator=(const DdfWriter&) = delete;

    void text(std::string_view bytes) {
        while (error_ == 0 && !bytes.empty()) {
            const std::size_t count = std::min(bytes.size(), buffer_.size() - used_);
            std::memcpy(buffer_.data() + used_, bytes.data(), count);
            used_ += count;
            bytes.remove_prefix(count);
            if (used_ == buffer_.size()) flush();
        }
    }

    /// Hands over what is left and cuts the handle to its text.
    [[nodiscard]] errorWord finish() {
        flush();
        if (target_.handle != nullptr && handleSize(target_.handle) != handleUsed_) {
            const std::int16_t failed = resizeHandle(target_.handle, handleUsed_);
            if (failed != 0 && error_ == 0) error_ = errDdfGrowHandle;
        }
        return error_;
    }

 private:
    void flush() {
        if (error_ == 0 && used_ > 0 && target_.file > noFile) {
            std::size_t count = used_;
            if (fileWrite(target_.file, buffer_.data(), &count, nullptr, 0) != 0) error_ = errDdfWrite;
        }
        if (error_ == 0 && used_ > 0 && target_.handle != nullptr) error_ = growHandle();
        used_ = 0;
    }

    errorWord growHandle() {
        const std::size_t size = handleSize(target_.handle);
        if (size - handleUsed_ < used_) {
            // By half its size, so that a long text is copied a few times and not once a piece.
            if (resizeHandle(target_.handle, handleUsed_ + used_ + size / 2) != 0) return errDdfGrowHandle;
        }
        std::memcpy(*target_.handle + handleUsed_, buffer_.data(), used_);
        handleUsed_ += used_;
        return 0;
    }

    const ddfTargetRec target_;
    std::size_t handleUsed_;
    errorWord error_;
    std::size_t used_ = 0;
    std::array<char, writeBufferSize> buffer_;
};

/// One statement: made with its indentation, given its operands in order, ended by its keyword.
class Statement {
 public:
    Statement(DdfWriter& writer, int indent) : writer_(writer) {
        for (int tab = 0; tab < indent; ++tab)
            writer_.text("\t");
    }

    Statement& word(std::string_view operand) {
        writer_.text(operand);
        writer_.text(" ");
        return *this;
    }

    Statement& quoted(std::string_view operand) {
        writeQuoted(writer_, operand);
        writer_.text(" ");
        return *this;
    }
    Statement& quoted(const std::uint8_t* operand) { return quoted(pstrView(operand)); }

    /// Quoted only when it would not come back without quotes.
    Statement& bare(std::string_view operand) {
        constexpr std::string_view quotedBytes("\t ,;\"'\\\0", 8);
        const bool needsQuotes = operand.empty() || operand.find_first_of(quotedBytes) != std::string_view::npos;
        return needsQuotes ? quoted(operand) : word(operand);
    }

    Statement& flag(std::uint8_t operand) { return word(operand != 0 ? "TRUE" : "FALSE"); }

    template <typename Number>
    Statement& number(Number operand) {
        std::array<char, 24> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), operand).ptr;
        return word({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    template <typename Flagged>
    Statement& flagged(const Flagged& operand) {
        return flag(operand.enable).quoted(operand.string);
    }

    void end(std::string_view keyword) {
        writer_.text(keyword);
        writer_.text(";");
        writer_.text(lineEnd);
    }

    /// A 0 byte is left out, because reading takes it for the mark of a quote.
    static void writeQuoted(DdfWriter& writer, std::string_view text) {
        constexpr std::string_view special("\"'\\\0", 4);
        writer.text("\"");
        while (!text.empty()) {
            const std::size_t plain = std::min(text.find_first_of(special), text.size());
            writer.text(text.substr(0, plain));
            text.remove_prefix(plain);
            if (text.empty()) break;
            if (text.front() != '\0') {
                writer.text("\\");
                writer.text(text.substr(0, 1));
            }
            text.remove_prefix(1);
        }
        writer.text("\"");
    }

 private:
    DdfWriter& writer_;
};

void writeTextUnlessEmpty(DdfWriter& writer, int indent, const std::uint8_t* text, std::string_view keyword) {
    if (text[0] != 0) Statement(writer, indent).quoted(text).end(keyword);
}

void writePathUnlessEmpty(DdfWriter& writer, int indent, const char* path, std::string_view keyword) {
    if (path[0] != 0) Statement(writer, indent).quoted(std::string_view(path)).end(keyword);
}

template <typename Flagged>
void writeTextIfSet(DdfWriter& writer, int indent, const Flagged& text, std::string_view keyword) {
    if (text.enable != 0) Statement(writer, indent).quoted(text.string).end(keyword);
}

void writeIfSet(DdfWriter& writer, int indent, std::uint8_t flag, std::string_view keyword) {
    if (flag != 0) Statement(writer, indent).end(keyword);
}

/// The word of a value; the first for a value that has none.
template <std::size_t count>
std::string_view wordOf(const std::array<const char*, count>& words, std::int16_t value) {
    return words[value >= 0 && static_cast<std::size_t>(value) < count ? static_cast<std::size_t>(value) : 0];
}

std::size_t quotedLength(std::string_view text) {
    const auto escaped =
        std::count_if(text.begin(), text.end(), [](char c) { return c == '"' || c == '\'' || c == '\\'; });
    return text.size() + static_cast<std::size_t>(escaped) + 2;
}

/// The list's order, but equal names from the last to the first: reading takes the items from the end and puts an equal
/// name behind, so that the list comes back as it is.
std::vector<const fieldNameEntry*> writtenFields(const recordDefFixedRec& definition) {
    std::vector<const fieldNameEntry*> fields;
    std::size_t runStart = 0;
    for (std::uint16_t index = 0, count = fieldCountOf(definition); index < count; ++index) {
        const fieldNameEntry* const entry = &definition.fields[index];
        if (!fields.empty() && pstrView(fields.back()->fieldName) != pstrView(entry->fieldName)) {
            runStart = fields.size();
        }
        fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(runStart), entry);
    }
    return fields;
}

void writeFieldList(DdfWriter& writer, const recordDefFixedRec& definition) {
    const std::vector<const fieldNameEntry*> fields = writtenFields(definition);
    if (fields.empty()) return;
    writer.text("\t");
    std::size_t lineLength = 0;
    for (const fieldNameEntry* const field : fields) {
        const fieldNameEntry& entry = *field;
        const std::string number = std::to_string(entry.fieldNumber) + ":";
        const bool last = field == fields.back();
        const std::size_t itemLength = number.size() + quotedLength(pstrView(entry.fieldName)) + (last ? 0 : 1);
        if (lineLength > 0 && lineLength + 1 + itemLength >= fieldLineLimit) {
            writer.text(lineEnd);
            writer.text("\t");
            lineLength = 0;
        }
        if (lineLength > 0) writer.text(" ");
        lineLength += itemLength + (lineLength > 0 ? 1 : 0);
        writer.text(number);
        Statement::writeQuoted(writer, pstrView(entry.fieldName));
        writer.text(last ? " " : ",");
    }
    writer.text("fieldName;");
    writer.text(lineEnd);
}

void writeHex(DdfWriter& writer, blockHandle data, std::string_view keyword) {
    if (data == nullptr) return;
    writer.text("\t\"");
    const std::size_t size = handleSize(data);
    for (std::size_t index = 0; index < size; ++index) {
        if (index % (hexLineDigits / 2) == 0) {
            writer.text(lineEnd);
            writer.text("\t");
        }
        constexpr std::string_view digits = "0123456789ABCDEF";
        const auto byte = std::to_integer<std::size_t>((*data)[index]);
        const std::array<char, 2> pair = {digits[byte >> 4], digits[byte & 15]};
        writer.text({pair.data(), pair.size()});
    }
    writer.text(lineEnd);
    writer.text("\t\" ");
    writer.text(keyword);
    writer.text(";");
    writer.text(lineEnd);
}

void writeSource(DdfWriter& writer, const recordDefFixedRec& definition) {
    Statement(writer, 1).bare(pstrView(definition.signature)).end("signature");
    const std::string_view databasePath(definition.databasePath);
    if (!databasePath.empty()) Statement(writer, 1).bare(databasePath).end("databasePath");
    writeTextUnlessEmpty(writer, 1, definition.odbcDataSourceName, "odbcDataSourceName");
    writeTextUnlessEmpty(writer, 1, definition.odbcUserId, "odbcUserId");
    writeTextUnlessEmpty(writer, 1, definition.odbcPassword, "odbcPassword");
    writeTextUnlessEmpty(writer, 1, definition.httpDataSourceName, "httpDataSourceName");
    writeTextUnlessEmpty(writer, 1, definition.httpUserId, "httpUserId");
    writeTextUnlessEmpty(writer, 1, definition.httpPassword, "httpPassword");
    Statement(writer, 1).number(definition.lastUpdate).end("lastUpdate");
    writeFieldList(writer, definition);
    writeTextUnlessEmpty(writer, 1, definition.keyField, "keyField");
    Statement(writer, 1).flag(definition.useKeyfieldCase).end("useKeyfieldCase");
}

void writeAccess(DdfWriter& writer, const recordDefRec& definition) {
    Statement(writer, 1).flagged(definition.sqlPrologue).end("sqlPrologue");
    Statement(writer, 1).flagged(definition.sqlEpilogue).end("sqlEpilogue");
    Statement(writer, 1).flagged(definition.sqlRowCount).end("sqlRowCount");
    Statement(writer, 1).flagged(definition.reqPrologue).end("reqPrologue");
    Statement(writer, 1).flagged(definition.reqEpilogue).end("reqEpilogue");
    Statement(writer, 1).flagged(definition.reqRowCount).end("reqRowCount");
    Statement(writer, 1).number(definition.dataAccessMode).end("dataAccessMode");
    Statement(writer, 1).number(definition.dataType).end("dataType");
    Statement(writer, 1).number(definition.fileType).end("fileType");
    writeTextUnlessEmpty(writer, 1, definition.fDelimiter, "fDelimiter");
    Statement(writer, 1).flagged(definition.textQualifier).end("textQualifier");
    Statement(writer, 1).flagged(definition.vtTranslation).end("vtTranslation");
    Statement(writer, 1).flagged(definition.exportTransTable).flagged(definition.importTransTable).end("transTable");
    Statement(writer, 1).flagged(definition.exportSrSet).flagged(definition.importSrSet).end("bsrSet");
    Statement(writer, 1).flagged(definition.ruleSet).end("ruleSet");
    writeHex(writer, definition.ruleSetData, "ruleSetData");
    writeHex(writer, definition.ruleSetData2, "ruleSetData2");
    Statement(writer, 1).number(definition.osType).end("osType");
    Statement(writer, 1).end("pictureSearch");
    Statement(writer, 2).flag(definition.pictureSearch.enable).end("enable");
    writePathUnlessEmpty(writer, 2, definition.pictureSearch.searchPath, "searchPath");
    Statement(writer, 2).flag(definition.pictureSearch.subDirs).end("subDirs");
}

void writeRecord(DdfWriter& writer, const searchCriteriaRec& criteria) {
    Statement(writer, 1).quoted(criteria.name).end("searchCriteria");
    writeTextIfSet(writer, 2, criteria.prefix, "prefix");
    writeTextIfSet(writer, 2, criteria.suffix, "suffix");
    Statement(writer, 2).word(wordOf(ddfContextWords, criteria.context)).end("context");
    writeIfSet(writer, 2, criteria.caseSense, "caseSense");
    Statement(writer, 2).flagged(criteria.sqlFragment).end("sqlFragment");
    Statement(writer, 2).flagged(criteria.reqFragment).end("reqFragment");
    for (const fieldSearchRec& test : criteria.fieldSearch) {
        if (test.field[0] == 0) break;
        Statement(writer, 2).quoted(test.field).end("fieldSearch");
        Statement(writer, 3).quoted(test.string).end("string");
        writeIfSet(writer, 3, test.enable, "enable");
    }
    writer.text(lineEnd);
}

void writeLinkHandling(DdfWriter& writer, const extractionRec& link) {
    Statement(writer, 2)
        .number(link.colorRed)
        .number(link.colorGreen)
        .number(link.colorBlue)
        .flag(link.useColorAttr)
        .end("useColorAttr");
    writeIfSet(writer, 2, link.locked, "locked");
    writeIfSet(writer, 2, link.mailMerge, "mailMerge");
    writeIfSet(writer, 2, link.ignoreLink, "ignoreLink");
    writeIfSet(writer, 2, link.associateMe, "associateMe");
    writeIfSet(writer, 2, link.shared, "shared");
    Statement(writer, 2).number(link.nodata).end("nodata");
    Statement(writer, 2).number(link.deleteline).end("deleteline");
    Statement(writer, 2).quoted(link.nodatastring).end("nodatastring");
    Statement(writer, 2).number(link.missingasset).end("missingasset");
    writePathUnlessEmpty(writer, 2, link.missingassetstring, "missingassetstring");
    writeTextUnlessEmpty(writer, 2, link.notes, "notes");
}

void writeLinkValue(DdfWriter& writer, const extractionRec& link) {
    Statement(writer, 2).number(link.pdfExportType).end("pdfExportType");
    Statement(writer, 2).number(link.type).end("type");
    Statement magicKey(writer, 2);
    for (const std::int16_t number : link.magicKeyNumbers)
        magicKey.number(number);
    magicKey.quoted(link.magicKey).end("magicKey");
    writeTextIfSet(writer, 2, link.prefix, "prefix");
    writeTextIfSet(writer, 2, link.suffix, "suffix");
    Statement(writer, 2).flag(link.importFilter == importFilterTaggedText ? 1 : 0).end("xpressTags");
    Statement(writer, 2).number(link.importFilter).end("importFilter");
    Statement(writer, 2).flag(link.resetStyles).end("resetStyles");
    Statement(writer, 2).flag(link.isafile).end("isafile");
    Statement(writer, 2).quoted(link.dataFunction).end("dataFunction");
    Statement(writer, 2).flag(link.useDataFormat).quoted(link.dataFormat).end("dataFormat");
    Statement(writer, 2).number(link.picturePosition).end("picturePosition");
    Statement(writer, 2).number(link.hAlign).end("hAlign");
    Statement(writer, 2).number(link.vAlign).end("vAlign");
    Statement(writer, 2).quoted(link.field).end("field");
    Statement(writer, 2).flagged(link.sqlFragment).end("sqlFragment");
    Statement(writer, 2).flagged(link.reqFragment).end("reqFragment");
    Statement(writer, 2).number(link.pictureBoxAction).end("pictureBoxAction");
    Statement(writer, 2).flag(link.addPicBoxToGroup).end("addPicBoxToGroup");
    Statement(writer, 2).number(link.importPosition).end("importPosition");
}

void writeRecord(DdfWriter& writer, const extractionRec& link) {
    Statement(writer, 1).quoted(link.name).end("extractionRecord");
    writeLinkHandling(writer, link);
    writeLinkValue(writer, link);
    writer.text(lineEnd);
}

void writePrice(DdfWriter& writer, const priceFormatRec& price) {
    Statement(writer, 2).end("price");
    Statement(writer, 3).word(wordOf(ddfFormatWords, price.format)).end("format");
    Statement(writer, 3).word("FALSE").flag(price.underline).end("underline");
    Statement(writer, 3).number(price.useRadix).end("useRadix");
    Statement(writer, 3).number(price.centsShift).number(price.centsSize).flag(price.specialCents).end("specialCents");
    Statement(writer, 3).number(price.centsKerning).flag(price.kernCents).end("kernCents");
    Statement(writer, 3).quoted(price.xpressTagString).end("xpressTagString");
}

void writeCurrency(DdfWriter& writer, const currencySymbolRec& currency) {
    Statement(writer, 2).end("currency");
    Statement(writer, 3).flag(currency.enable).end("enable");
    Statement(writer, 3).quoted(currency.string).end("string");
    Statement(writer, 3).flag(currency.insAfter).end("insAfter");
    Statement(writer, 3).flag(currency.superior).end("superior");
    Statement(writer, 3)
        .number(currency.symbolShift)
        .number(currency.symbolSize)
        .flag(currency.sizeSymbol)
        .end("sizeSymbol");
    Statement(writer, 3).number(currency.symbolKerning).flag(currency.kernSymbol).end("kernSymbol");
}

void writeRecord(DdfWriter& writer, const styleRec& style) {
    Statement(writer, 1).quoted(style.name).end("styleRecord");
    Statement(writer, 2).flag(style.checkPrice).end("checkPrice");
    for (const priceGroupRec& group : style.groups) {
        writePrice(writer, group.price);
        writeCurrency(writer, group.currency);
    }
    writer.text(lineEnd);
}

void writeDefinition(DdfWriter& writer, const recordDefRec& definition) {
    Statement(writer, 0).quoted(definition.name).end("recordDefinition");
    writer.text(lineEnd);
    writeSource(writer, definition);
    writeAccess(writer, definition);
    writer.text(lineEnd);
    for (const auto* criteria : recordsOf<searchCriteriaRec>(definition))
        writeRecord(writer, *criteria);
    for (const auto* link : recordsOf<extractionRec>(definition))
        writeRecord(writer, *link);
    for (const auto* style : recordsOf<styleRec>(definition))
        writeRecord(writer, *style);
    writer.text(lineEnd);
}

}  // namespace

errorWord ddfWriteDefinition(const recordDefRec& definition, const ddfTargetRec& target, errorWord priorError) {
    if (priorError != 0) return priorError;
    DdfWriter writer(target, 0);
    writeDefinition(writer, definition);
    return writer.finish();
}

errorWord ddfWriteSet(const recordDefSetRec& set, const ddfTargetRec& target, errorWord priorError) {
    if (priorError != 0) return priorError;
    DdfWriter writer(target, 0);
    if (const recordDefNode* node = set.definitions) {
        do {
            writeDefinition(writer, node->definition);
            node = node->next;
        } while (node != set.definitions);
    }
    return writer.finish();
}

}  // namespace tarnova
