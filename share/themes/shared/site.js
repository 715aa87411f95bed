// What a page does beyond being read: tables sort, and the search finds drivers and races. Without it every page is
// whole.
"use strict";
(function () {
  var root = document.body.getAttribute("data-root") || "";

  // ---- sorting

  function number(text) {
    var clean = text.replace(/\s+mph$/, "").replace(",", ".");
    if (/^[+-]?\d+(\.\d+)?$/.test(clean)) return parseFloat(clean);
    var time = /^(?:(\d+):)?(\d+):(\d+(?:\.\d+)?)$/.exec(clean);
    if (time) return (Number(time[1] || 0) * 60 + Number(time[2])) * 60 + Number(time[3]);
    return null;
  }

  function sort(table, column, button) {
    var heads = table.tHead.rows[0].cells;
    var ascending = heads[column].getAttribute("aria-sort") !== "ascending";
    var rows = Array.prototype.map.call(table.tBodies[0].rows, function (row, place) {
      var text = row.cells[column].textContent.trim();
      return { row: row, place: place, text: text, number: number(text) };
    });
    var numbers = rows.some(function (row) { return row.number !== null; });
    rows.sort(function (a, b) {
      var order;
      if (numbers) {
        // What is no number comes last either way.
        if (a.number === null || b.number === null) return (a.number === null) - (b.number === null) || a.place - b.place;
        order = a.number - b.number;
      } else {
        order = a.text.localeCompare(b.text);
      }
      return (ascending ? order : -order) || a.place - b.place;
    });
    rows.forEach(function (row) { table.tBodies[0].appendChild(row.row); });
    for (var i = 0; i < heads.length; ++i) heads[i].removeAttribute("aria-sort");
    heads[column].setAttribute("aria-sort", ascending ? "ascending" : "descending");
    button.focus();
  }

  Array.prototype.forEach.call(document.querySelectorAll("table.sortable"), function (table) {
    Array.prototype.forEach.call(table.tHead.rows[0].cells, function (head, column) {
      var button = document.createElement("button");
      button.type = "button";
      while (head.firstChild) button.appendChild(head.firstChild);
      head.appendChild(button);
      button.addEventListener("click", function () { sort(table, column, button); });
    });
  });

  // ---- the search; its entries are a script, which works from a folder, too

  var form = document.querySelector("form.search");
  if (!form) return;
  var input = form.querySelector("input");
  var list = form.querySelector("ul");
  form.hidden = false;

  function plain(text) {
    return text.normalize("NFD").replace(/[\u0300-\u036f]/g, "").toLowerCase();
  }

  function load() {
    input.removeEventListener("focus", load);
    if (window.siteSearch) return;
    var script = document.createElement("script");
    script.src = root + "assets/search.js";
    script.onload = show;
    document.head.appendChild(script);
  }

  function show() {
    var wanted = plain(input.value.trim());
    list.textContent = "";
    list.hidden = !wanted || !window.siteSearch;
    if (list.hidden) return;
    var found = 0;
    for (var i = 0; i < window.siteSearch.length && found < 12; ++i) {
      var entry = window.siteSearch[i];
      if (plain(entry[0]).indexOf(wanted) < 0) continue;
      ++found;
      var item = document.createElement("li");
      var link = document.createElement("a");
      var name = document.createElement("bdi");
      name.textContent = entry[0];
      link.href = root + entry[1];
      link.appendChild(name);
      item.appendChild(link);
      list.appendChild(item);
    }
    if (!found) {
      var nothing = document.createElement("li");
      nothing.textContent = "Nothing found";
      list.appendChild(nothing);
    }
  }

  input.addEventListener("focus", load);
  input.addEventListener("input", function () { load(); show(); });
  form.addEventListener("submit", function (event) {
    event.preventDefault();
    var first = list.querySelector("a");
    if (first && !list.hidden) window.location.href = first.href;
  });
  document.addEventListener("keydown", function (event) {
    if (event.key === "Escape") list.hidden = true;
  });
  document.addEventListener("click", function (event) {
    if (!form.contains(event.target)) list.hidden = true;
  });
})();
