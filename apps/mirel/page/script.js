"use strict";
// Draws the charts that the data block describes, with the library inlined before this script.
(() => {
  const colours = ["#1f6fb2", "#d9730d", "#1b7f4d", "#8e44ad"];
  const charts = JSON.parse(document.getElementById("data").textContent).charts;
  const points = (chart, series) =>
    chart.overTime ? series.values.map((y, i) => ({ x: chart.labels[i], y })) : series.values;
  const span = (chart) => chart.overTime ? { type: "linear", min: chart.labels[0], max: chart.labels.at(-1) } : {};
  // Curves of one name have one entry.
  const legend = (chart) => ({
    display: chart.series.length > 1, position: "bottom",
    labels: {
      boxWidth: chart.overTime ? 26 : 14, usePointStyle: chart.overTime,
      sort: (a, b) => a.datasetIndex - b.datasetIndex,
      filter: (item) => chart.series.findIndex((series) => series.name === item.text) === item.datasetIndex,
    },
  });
  // Charts below each other have their left ends in one line.
  const alignment = (chart) => chart.overTime ? { afterFit: (scale) => { scale.width = 66; } } : {};
  // Grey bands behind the curves.
  const shading = (chart) => ({
    id: "shading",
    beforeDatasetsDraw({ ctx, chartArea: area, scales: { x } }) {
      ctx.save();
      ctx.fillStyle = "rgba(70, 80, 90, .12)";
      for (const [from, to] of chart.shaded) {
        const left = x.getPixelForValue(from);
        ctx.fillRect(left, area.top, x.getPixelForValue(to) - left, area.bottom - area.top);
      }
      ctx.restore();
    },
  });
  const drawn = charts.map((chart, index) => new Chart(document.getElementById("chart" + index), {
    type: "line",
    data: {
      labels: chart.labels,
      datasets: chart.series.map((series, i) => ({
        label: series.name, data: points(chart, series), borderColor: series.dashed ? "#1e2328" : colours[i],
        backgroundColor: series.dashed ? "#1e2328" : colours[i], borderDash: series.dashed ? [5, 4] : [],
        pointStyle: chart.overTime ? "line" : "circle", borderWidth: chart.overTime ? 1.2 : 1.8, pointRadius: chart.labels.length > 60 ? 0 : 2.5, pointHitRadius: 8,
        spanGaps: false, order: chart.overTime ? -i : 0,
      })),
    },
    plugins: [shading(chart)],
    options: {
      animation: false, maintainAspectRatio: false,
      interaction: { mode: "index", intersect: false },
      plugins: { legend: legend(chart) },
      scales: {
        x: { ...span(chart), title: { display: true, text: chart.x }, ticks: { maxRotation: 0, autoSkipPadding: 16 } },
        y: { ...alignment(chart), title: { display: true, text: chart.y }, beginAtZero: chart.fromZero },
      },
    },
  }));
  addEventListener("beforeprint", () => drawn.forEach((chart, i) => chart.resize(charts[i].overTime ? 680 : 320, 200)));
  addEventListener("afterprint", () => drawn.forEach((chart) => chart.resize()));
})();
