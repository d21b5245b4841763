"use strict";
// Draws the charts that the data block describes, with the library inlined before this script.
(() => {
  const colours = ["#1f6fb2", "#d9730d", "#1b7f4d", "#8e44ad"];
  const charts = JSON.parse(document.getElementById("data").textContent).charts;
  const drawn = charts.map((chart, index) => new Chart(document.getElementById("chart" + index), {
    type: "line",
    data: {
      labels: chart.labels,
      datasets: chart.series.map((series, i) => ({
        label: series.name, data: series.values, borderColor: colours[i], backgroundColor: colours[i],
        borderWidth: 1.8, pointRadius: chart.labels.length > 60 ? 0 : 2.5, pointHitRadius: 8, spanGaps: false,
      })),
    },
    options: {
      animation: false, maintainAspectRatio: false,
      interaction: { mode: "index", intersect: false },
      plugins: { legend: { display: chart.series.length > 1, position: "bottom", labels: { boxWidth: 14 } } },
      scales: {
        x: { title: { display: true, text: chart.x }, ticks: { maxRotation: 0, autoSkipPadding: 16 } },
        y: { title: { display: true, text: chart.y }, beginAtZero: chart.fromZero },
      },
    },
  }));
  addEventListener("beforeprint", () => drawn.forEach((chart) => chart.resize(320, 200)));
  addEventListener("afterprint", () => drawn.forEach((chart) => chart.resize()));
})();
