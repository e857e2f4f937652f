#include "bench/price_job.h"

#include <fmt/format.h>

#include <fstream>

namespace tarnova::bench {
namespace {

constexpr const char* kinds[] = {"Hammer", "Saw", "Plane", "Chisel", "Pliers", "Wrench", "Drill", "File", "Level"};
constexpr const char* makes[] = {"Standard", "Professional", "Compact", "Heavy duty", "Classic"};
constexpr std::uint32_t columns = 5;

struct articleRec {
    std::string number, name;
    std::uint32_t euros, cents;
};

articleRec articleAt(std::uint32_t i) {
    return {fmt::format("A{:07}", i * 7919ULL % 10000000), fmt::format("{} {} {}", makes[i % 5], kinds[i % 9], i % 97),
            i % 400 + 1, i * 7 % 100};
}

/// The article of a cell.
articleRec articleOf(std::uint32_t cell, std::uint32_t articles) {
    return articleAt(static_cast<std::uint32_t>(cell * 104729ULL % articles));
}

constexpr const char* layoutHead = R"({"tarnovaLayout": 1, "title": "Catalog", "pageSize": [612, 792],
"swatches": [{"name": "Blue", "cmyk": [0.8, 0.2, 0, 0]}],
"paragraphStyles": [{"name": "Name", "font": "Helvetica", "bold": true, "size": 8, "leading": 10},
{"name": "Number", "font": "Helvetica", "size": 7, "leading": 9, "color": "Blue"},
{"name": "Price", "font": "Helvetica", "bold": true, "size": 18, "leading": 22}],
"pages": [)";

constexpr const char* definition = R"("Prices" recordDefinition;
	TARNOVAJNT signature;
	1:"number", 2:"name", 3:"price" fieldName;
	"number" keyField;
	0 dataType;
	1 fileType;
	2 osType;
	"price" extractionRecord;
		"price" field;
	"Shop" styleRecord;
		FALSE checkPrice;
		price;
			all format;
			19661 39322 TRUE specialCents;
		currency;
			TRUE enable;
			"$" string;
)";

constexpr const char* texHead = R"(\pdfpagewidth=612bp \pdfpageheight=792bp \pdfhorigin=0bp \pdfvorigin=0bp
\hsize=560bp \vsize=740bp \hoffset=26bp \voffset=26bp \pdfcompresslevel=1 \pdfobjcompresslevel=2
\font\name=phvb8t at 8bp \font\number=phvr8t at 7bp \font\price=phvb8t at 18bp \font\cents=phvb8t at 10.8bp
\parindent=0pt \parskip=0pt \baselineskip=0pt \lineskip=0pt \nopagenumbers
\def\cell#1#2#3#4{\vbox to 148bp{\hsize=112bp \hbox to 112bp{\name #1\hfil}\vskip 2bp
\hbox{\pdfliteral{0.8 0.2 0 0 k}\number #2\pdfliteral{0 g}}\vskip 4bp
\hbox{\price \char36 #3\raise5.4bp\hbox{\cents #4}}\vfil}}
)";

// The list is read once; a control sequence an article then holds its price. No group: it would save each of them.
constexpr const char* texList = R"(\newread\list \openin\list=articles.csv \endlinechar=-1
\def\entry#1,#2,#3.#4;{\expandafter\def\csname #1\endcsname{{#3}{#4}}}%
\read\list to\line
\loop \read\list to\line \unless\ifeof\list \expandafter\entry\line;\repeat
\endlinechar=13
\def\priced#1#2{\expandafter\expandafter\expandafter\pricedwith\csname #2\endcsname{#1}{#2}}
\def\pricedwith#1#2#3#4{\cell{#3}{#4}{#1}{#2}}
)";

}  // namespace

void writeArticles(const std::string& folder, std::uint32_t articles) {
    std::ofstream file(folder + "/articles.csv", std::ios::binary);
    file << "number,name,price\n";
    for (std::uint32_t i = 0; i < articles; ++i) {
        const articleRec article = articleAt(i);
        file << fmt::format("{},{},{}.{:02}\n", article.number, article.name, article.euros, article.cents);
    }
}

void writeCatalog(const std::string& folder, std::uint32_t cells, std::uint32_t articles) {
    std::ofstream(folder + "/prices.ddf", std::ios::binary) << definition;
    std::ofstream file(folder + "/catalog.tvd", std::ios::binary);
    file << layoutHead;
    for (std::uint32_t cell = 0; cell < cells; ++cell) {
        const articleRec article = articleOf(cell, articles);
        const std::uint32_t place = cell % cellsOfPage;
        if (place == 0) file << (cell == 0 ? "{\"items\": [\n" : "]},\n{\"items\": [\n");
        file << fmt::format(R"({}{{"bounds": [{}, {}, 112, 148], "text": [{{"style": "Name", "text": "{}"}},
{{"style": "Number", "text": "{}"}}, {{"style": "Price", "text": [{{"text": "0.00",
"tallyraTag": {{"link": "price", "key": "{}", "style": "Shop"}}}}]}}]}})",
                            place == 0 ? "" : ",\n", 26 + place % columns * 112, 26 + place / columns * 148,
                            article.name, article.number, article.number);
    }
    file << "]}\n]}\n";
}

void writeTexCatalogs(const std::string& folder, std::uint32_t cells, std::uint32_t articles) {
    std::ofstream set(folder + "/catalog-set.tex", std::ios::binary),
        list(folder + "/catalog-list.tex", std::ios::binary);
    set << texHead;
    list << texHead << texList;
    for (std::uint32_t cell = 0; cell < cells; ++cell) {
        const articleRec article = articleOf(cell, articles);
        const bool endsRow = cell % columns == columns - 1, endsPage = cell % cellsOfPage == cellsOfPage - 1;
        const std::string before = fmt::format("{}{}", cell % cellsOfPage == 0 ? "\\vbox to 740bp{" : "",
                                               cell % columns == 0 ? "\\hbox{" : "");
        const std::string behind = fmt::format("{}{}\n", endsRow ? "}" : "%", endsPage ? "\\vfil}\\eject" : "");
        set << before
            << fmt::format("\\cell{{{}}}{{{}}}{{{}}}{{{:02}}}", article.name, article.number, article.euros,
                           article.cents)
            << behind;
        list << before << fmt::format("\\priced{{{}}}{{{}}}", article.name, article.number) << behind;
    }
    set << "\\end\n";
    list << "\\end\n";
}

}  // namespace tarnova::bench
