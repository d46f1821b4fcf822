// Appended to a copy of the page by a test: measures how the browser lays it out, and says that on its console.
addEventListener('load', () => {
    const texts = [];
    const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    for (let node = walker.nextNode(); node; node = walker.nextNode()) {
        const element = node.parentElement;
        if (node.data.trim() && element.checkVisibility() && !element.closest('.vh, i, script, title, .skip')) texts.push(node);
    }
    const probe = document.createElement('canvas').getContext('2d', {willReadFrequently: true});
    const parts = colour => {
        probe.clearRect(0, 0, 1, 1);
        probe.fillStyle = colour;
        probe.fillRect(0, 0, 1, 1);
        return [...probe.getImageData(0, 0, 1, 1).data];
    };
    const luminance = ([red, green, blue]) => {
        const linear = value => value <= 0.04045 * 255 ? value / 255 / 12.92 : ((value / 255 + 0.055) / 1.055) ** 2.4;
        return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
    };
    const groundOf = element => {
        for (let at = element; at; at = at.parentElement) {
            const colour = parts(getComputedStyle(at).backgroundColor);
            if (colour[3] === 255) return colour;
        }
        return [255, 255, 255, 255];
    };
    const contrast = element => {
        const [one, other] = [parts(getComputedStyle(element).color), groundOf(element)].map(luminance);
        return (Math.max(one, other) + 0.05) / (Math.min(one, other) + 0.05);
    };
    const boxesOf = node => {
        const range = document.createRange();
        range.selectNodeContents(node);
        return [...range.getClientRects()];
    };
    const overlaps = (one, other) => one.left < other.right - 1 && other.left < one.right - 1 &&
        one.top < other.bottom - 3 && other.top < one.bottom - 3;

    const words = texts.filter(node => !node.parentElement.closest('.zones, .ys, .scroll, .top')).map(node => ({text: node.data, boxes: boxesOf(node)}));
    const overlapping = [];
    words.forEach((one, at) => words.slice(at + 1).forEach(other => {
        if (one.boxes.some(box => other.boxes.some(next => overlaps(box, next)))) overlapping.push(one.text + ' / ' + other.text);
    }));
    const width = document.documentElement.clientWidth;
    const result = {
        width,
        scrollWidth: document.documentElement.scrollWidth,
        texts: texts.length,
        pale: texts.map(node => node.parentElement).filter(element => contrast(element) < 4.5)
            .map(element => element.className + ' ' + element.textContent.slice(0, 40) + ' ' + contrast(element).toFixed(2)),
        overlapping,
        cut: words.filter(({boxes}) => boxes.some(box => box.right > width || box.left < 0)).map(({text}) => text),
        spilling: [...document.querySelectorAll('.figures :is(th, td)')]
            .filter(cell => cell.checkVisibility() && !cell.closest('.scroll') && cell.scrollWidth > cell.clientWidth + 1)
            .map(cell => cell.textContent),
        tabStops: [...document.querySelectorAll('a[href], input:checked, summary, [tabindex="0"]')]
            .filter(element => element.checkVisibility()).length,
        hasDarkGround: luminance(groundOf(document.body)) < 0.18,
        charts: [...document.querySelectorAll('svg[role=img]')].filter(chart => chart.checkVisibility()).map(chart => {
            const box = chart.getBoundingClientRect();
            return Math.round(Math.min(box.width, box.height));
        }),
        measures: ['c', 't', 'e'].filter(letter => document.querySelector('.plot > .m' + letter).checkVisibility()),
        heat: new Set([...document.querySelectorAll('.cal td:not(.x, .o)')].map(cell => getComputedStyle(cell).backgroundColor)).size,
        blanks: new Set([...document.querySelectorAll('.cal .x')].map(cell => getComputedStyle(cell).backgroundColor)).size,
        slider: document.querySelector('.zones').getAttribute('aria-valuetext'),
        steps: typeof steps === 'function' ? steps() : null,
    };
    console.log('measured:' + btoa(String.fromCharCode(...new TextEncoder().encode(JSON.stringify(result)))) + ':');
});
