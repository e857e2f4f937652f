// The reference job of price runs: a catalog of 25 price cells a page, updated from a list of articles, and the same
// pages for pdfTeX.

#pragma once

#include <cstdint>
#include <string>

namespace tarnova::bench {

inline constexpr std::uint32_t cellsOfPage = 25;

/// Writes articles.csv (number, name, price).
void writeArticles(const std::string& folder, std::uint32_t articles);
/// Writes catalog.tvd and prices.ddf: `cells` cells with links to articles from all over the list, and a price style
/// with a currency symbol and raised cents.
void writeCatalog(const std::string& folder, std::uint32_t cells, std::uint32_t articles);
/// Writes catalog-set.tex, in which all values stand in their cells, and catalog-list.tex, which finds them in
/// articles.csv.
void writeTexCatalogs(const std::string& folder, std::uint32_t cells, std::uint32_t articles);

}  // namespace tarnova::bench
