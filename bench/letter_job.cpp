#include "bench/letter_job.h"

#include <fmt/format.h>

#include <fstream>

namespace tarnova::bench {
namespace {

constexpr const char* firstNames[] = {"Anna",  "Bernd", "Clara", "David", "Emma",  "Felix", "Greta",
                                      "Henry", "Ida",   "Jonas", "Karin", "Lukas", "Maria", "Nils",
                                      "Olga",  "Peter", "Rosa",  "Simon", "Tina",  "Uwe"};
constexpr const char* lastNames[] = {"Springfield", "Baker",    "Carpenter", "Dawson",  "Ellington",  "Fisher",
                                     "Goldsmith",   "Harrison", "Ingram",    "Johnson", "Kingsleigh", "Lancaster"};

struct recordRec {
    std::string name, street, city, amount, code;
};

recordRec recordAt(std::uint32_t i) {
    return {fmt::format("{} {}", firstNames[i % 20], lastNames[i / 20 % 12]),
            fmt::format("{} Long Meadow Street", i % 300 + 1), fmt::format("{:05} Springfield", i * 7 % 100000),
            fmt::format("{}.{:02} EUR", i % 5000, i % 100),
            fmt::format("TX-{:08}-{}", i * 7919ULL % 100000000, i % 10)};
}

/// 1,500 characters that are the same on each page.
std::string staticText() {
    constexpr const char* sentence =
        "Thank you for the trust that you have placed in us during the past year. We have reviewed the terms of your "
        "agreement and are pleased to confirm that they remain unchanged for the coming twelve months. ";
    std::string text;
    while (text.size() < 1500)
        text += sentence;
    text.resize(1499);
    return text + ".";
}

/// The wrapped paragraph of 300 characters, with `name` in two places.
std::string wrappedText(const std::string& name) {
    return "Dear " + name +
           ", we are writing to you because the yearly statement of your account has been prepared and is ready for "
           "your "
           "review. The amount that is due has been computed from the readings of the meter at your address, and we "
           "ask "
           "you, " +
           name + ", to compare it with your own notes before the month ends.";
}

void writeData(const std::string& path, std::uint32_t records) {
    std::ofstream file(path, std::ios::binary);
    file << "name,street,city,member,amount,code\n";
    for (std::uint32_t i = 0; i < records; ++i) {
        const recordRec record = recordAt(i);
        file << fmt::format("{},{},{},{},{},{}\n", record.name, record.street, record.city, record.name, record.amount,
                            record.code);
    }
}

void writeLayout(const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << R"({"tarnovaLayout": 1, "title": "Letters", "pageSize": [612, 792],
"swatches": [{"name": "Blue", "cmyk": [0.8, 0.2, 0, 0]}, {"name": "Orange", "cmyk": [0, 0.6, 0.9, 0]}],
"paragraphStyles": [{"name": "Body", "font": "Helvetica", "size": 10, "leading": 12}],
"pages": [{"items": [
{"group": [{"bounds": [72, 72, 100, 40], "fill": "Blue"},
           {"path": "M 82 107 C 132 72 162 72 167 107 Z", "fill": "Orange"}]},
{"kind": "line", "bounds": [72, 132, 468, 0], "stroke": {"color": "Black", "weight": 1}},
{"bounds": [72, 142, 468, 40], "text": [{"style": "Body", "bold": true, "text": "{{name}}"},
                                       {"style": "Body", "text": "{{street}}"}, {"style": "Body", "text": "{{city}}"}]},
{"bounds": [72, 200, 468, 64], "text": [{"style": "Body", "text": ")"
         << wrappedText("{{member}}") << R"("}]},
{"kind": "line", "bounds": [72, 270, 468, 0], "stroke": {"color": "Black", "weight": 0.5}},
{"bounds": [72, 280, 468, 14], "text": [{"style": "Body", "align": "right", "text": "{{amount}}"}]},
{"bounds": [72, 304, 468, 240], "text": [{"style": "Body", "text": ")"
         << staticText() << R"("}]},
{"kind": "line", "bounds": [72, 560, 468, 0], "stroke": {"color": "Black", "weight": 0.5}},
{"bounds": [72, 568, 468, 16], "text": [{"style": "Body", "text": "{{code}}"}]}
]}]}
)";
}

constexpr const char* texHead = R"(\pdfpagewidth=612bp \pdfpageheight=792bp \pdfhorigin=0bp \pdfvorigin=0bp
\hsize=468bp \vsize=648bp \hoffset=72bp \voffset=72bp \pdfcompresslevel=1 \pdfobjcompresslevel=2
\font\body=phvr8t at 10bp \font\bold=phvb8t at 10bp
\body \baselineskip=12bp \parindent=0pt \parskip=0pt \raggedright \nopagenumbers
\setbox0=\hbox{\pdfliteral{q 0.8 0.2 0 0 k 0 0 100 40 re f 0 0.6 0.9 0 k 10 5 m 60 40 90 40 95 5 c f Q}}
\wd0=100bp \ht0=40bp \pdfxform0 \edef\logo{\the\pdflastxform}
)";

constexpr const char* texLetter = R"(\def\letter#1#2#3#4#5{\vbox to 648bp{\pdfrefxform\logo \vskip 20bp
\hrule height 1bp \vskip 10bp \hbox{\bold #1}\hbox{#2}\hbox{#3}\vskip 20bp \vbox{\hsize=468bp )";
constexpr const char* texTail = R"(}\vskip 10bp \hrule height .5bp \vskip 10bp
\hbox to 468bp{\hfil #4}\vskip 10bp \statictext \vskip 10bp \hrule height .5bp \vskip 6bp \hbox{#5}\vfil}\eject}
)";

/// With `sharesStatic` the static text is set once and referred to, as a TeX user may do it by hand.
void writeTex(const std::string& path, std::uint32_t records, bool sharesStatic) {
    std::ofstream file(path, std::ios::binary);
    file << texHead;
    if (sharesStatic) {
        file << "\\setbox1=\\vbox{\\hsize=468bp " << staticText() << "}\\pdfxform1 \\edef\\form{\\the\\pdflastxform}\n"
             << "\\def\\statictext{\\pdfrefxform\\form}\n";
    } else {
        file << "\\def\\statictext{\\vbox{\\hsize=468bp " << staticText() << "}}\n";
    }
    file << texLetter << wrappedText("#1") << texTail;
    for (std::uint32_t i = 0; i < records; ++i) {
        const recordRec record = recordAt(i);
        file << fmt::format("\\letter{{{}}}{{{}}}{{{}}}{{{}}}{{{}}}\n", record.name, record.street, record.city,
                            record.amount, record.code);
    }
    file << "\\end\n";
}

}  // namespace

void writeLetterJob(const std::string& folder, std::uint32_t records) {
    writeData(folder + "/letters.csv", records);
    writeLayout(folder + "/letter.tvd");
    writeTex(folder + "/letter-set.tex", records, false);
    writeTex(folder + "/letter-shared.tex", records, true);
}

}  // namespace tarnova::bench
