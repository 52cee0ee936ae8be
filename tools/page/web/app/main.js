// Starts the page.
import uPlot from '/vendor/uPlot.esm.js';

document.documentElement.dataset.chart = typeof uPlot;
