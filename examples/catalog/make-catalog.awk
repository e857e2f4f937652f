# Makes a catalog of a price list: awk -v pages=N -f make-catalog.awk LIST > catalog.tvd
#
# LIST is sorted by product; a line is an article: number, brand, product, presentation, price, with tabs between. Of
# these only numbers and initials go into the catalog: all else is links, which `tarnova price` fills.

function link(name, key) {
    return "{\"text\": \"" name "\", \"tallyraTag\": {\"link\": \"" name "\", \"key\": \"" key "\"}}"
}

function price(key) {
    return "{\"style\": \"Price\", \"text\": \"0,00\", \"tallyraTag\": {\"link\": \"Price\", \"key\": \"" key "\", \"style\": \"Euro\"}}"
}

function paragraph(text) {
    body = body (body == "" ? "" : ",\n") "        " text
}

function pageItems(page,   first, top, text) {
    first = page == 1
    top = first ? 44 : 28
    text = first ? "\"text\": [\n" body "]" : "\"flowsFrom\": \"body" page - 1 "\""
    printf "    {\"master\": \"Page\", \"items\": [\n"
    if (first) {
        printf "      {\"bounds\": [0, 0, \"210mm\", \"30mm\"], \"fill\": \"Sea\"},\n"
        printf "      {\"bounds\": [\"14mm\", \"7mm\", \"120mm\", \"20mm\"], \"text\": [{\"style\": \"Title\", \"text\": \"Medicines\"}, {\"style\": \"Subtitle\", \"text\": \"Public prices before fee, in euros\"}]},\n"
        printf "      {\"bounds\": [\"134mm\", \"10mm\", \"62mm\", \"16mm\"], \"text\": [{\"style\": \"Edition\", \"text\": \"Updated on\"}, {\"style\": \"Edition\", \"text\": [%s]}]},\n", link("_DATE_LONG", "-")
    }
    printf "      {\"bounds\": [\"14mm\", \"%dmm\", \"182mm\", \"6mm\"], \"text\": [{\"style\": \"Head\", \"text\": [%s, \"\\t\", %s]}]},\n", top - 9, link("First", "-"), link("Last", "-")
    printf "      {\"kind\": \"line\", \"bounds\": [\"14mm\", \"%.1fmm\", \"182mm\", 0], \"stroke\": {\"color\": \"Sea\", \"weight\": 0.75}},\n", top - 3.2
    printf "      {\"name\": \"body%d\", \"bounds\": [\"14mm\", \"%dmm\", \"182mm\", \"%dmm\"], \"columns\": 2, \"gutter\": \"8mm\", %s}\n", page, top, 280 - top, text
    printf "    ]}%s\n", page < pages ? "," : ""
}

BEGIN { FS = "\t" }

{
    initial = substr($2, 1, 1)
    if (initial != lastInitial) paragraph("{\"style\": \"Letter\", \"text\": \"" initial "\"}")
    if ($3 != lastProduct) paragraph("{\"style\": \"Product\", \"text\": [" link("Product", $1) "]}")
    paragraph("{\"style\": \"Article\", \"text\": [{\"style\": \"Number\", \"text\": \"" $1 "\"}, \"\\t\", " link("Presentation", $1) ", \"\\u00A0\\t\\u2060\", " price($1) "]}")
    lastInitial = initial
    lastProduct = $3
}

END {
    print "{"
    print "  \"tarnovaLayout\": 1,"
    print "  \"title\": \"Medicines\","
    print "  \"pageSize\": [\"210mm\", \"297mm\"],"
    print "  \"swatches\": ["
    print "    {\"name\": \"Sea\", \"cmyk\": [0.85, 0.35, 0.25, 0.2]},"
    print "    {\"name\": \"Brick\", \"cmyk\": [0.1, 0.85, 0.75, 0.1]},"
    print "    {\"name\": \"Paper\", \"cmyk\": [0, 0, 0, 0]},"
    print "    {\"name\": \"Grey\", \"cmyk\": [0, 0, 0, 0.55]}],"
    print "  \"characterStyles\": [{\"name\": \"Number\", \"size\": 6, \"color\": \"Grey\"}, {\"name\": \"Price\", \"bold\": true, \"size\": 8.5}],"
    print "  \"paragraphStyles\": ["
    print "    {\"name\": \"Title\", \"font\": \"Helvetica\", \"bold\": true, \"size\": 26, \"leading\": 28, \"color\": \"Paper\"},"
    print "    {\"name\": \"Subtitle\", \"font\": \"Helvetica\", \"size\": 10, \"leading\": 14, \"color\": \"Paper\"},"
    print "    {\"name\": \"Edition\", \"font\": \"Helvetica\", \"size\": 10, \"leading\": 14, \"color\": \"Paper\", \"align\": \"right\"},"
    print "    {\"name\": \"Head\", \"font\": \"Helvetica\", \"bold\": true, \"size\": 9, \"leading\": 11, \"color\": \"Sea\", \"tabs\": [{\"at\": \"182mm\", \"kind\": \"right\"}]},"
    print "    {\"name\": \"Letter\", \"font\": \"Helvetica\", \"bold\": true, \"size\": 17, \"leading\": 19, \"color\": \"Brick\", \"spaceBefore\": 10, \"keepWithNext\": 2},"
    print "    {\"name\": \"Product\", \"font\": \"Helvetica\", \"bold\": true, \"size\": 8, \"leading\": 10, \"spaceBefore\": 4, \"keepWithNext\": 1},"
    print "    {\"name\": \"Article\", \"font\": \"Helvetica\", \"size\": 7.5, \"leading\": 10, \"leftIndent\": 48, \"firstLineIndent\": -48, \"keepLines\": \"all\","
    print "     \"tabs\": [{\"at\": 48}, {\"at\": \"87mm\", \"kind\": \"right\", \"leader\": \" .\"}]},"
    print "    {\"name\": \"Foot\", \"font\": \"Helvetica\", \"size\": 7, \"leading\": 9, \"color\": \"Grey\", \"tabs\": [{\"at\": \"182mm\", \"kind\": \"right\"}]}],"
    print "  \"masters\": [{\"name\": \"Page\", \"pages\": [{\"items\": ["
    print "    {\"kind\": \"line\", \"bounds\": [\"14mm\", \"284mm\", \"182mm\", 0], \"stroke\": {\"color\": \"Grey\", \"weight\": 0.4}},"
    print "    {\"bounds\": [\"14mm\", \"285.5mm\", \"182mm\", \"5mm\"], \"text\": [{\"style\": \"Foot\", \"text\": [\"Base de données publique des médicaments, ANSM/HAS/UNCAM\\t\", {\"special\": \"pageNumber\"}, \" / \", {\"special\": \"pageCount\"}]}]}"
    print "  ]}]}],"
    print "  \"pages\": ["
    for (page = 1; page <= pages; ++page) pageItems(page)
    print "  ]"
    print "}"
}
