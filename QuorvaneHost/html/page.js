(() => {
    'use strict';
    const remembered = ['measure', 'scheme'];
    const storage = (name, value) => {
        try {
            if (value === undefined) return localStorage.getItem('quorvane-' + name);
            localStorage.setItem('quorvane-' + name, value);
        } catch { /* a browser without storage forgets the choice */ }
        return null;
    };
    for (const name of remembered) {
        const choice = document.getElementById(storage(name) || '');
        if (choice && choice.name === name) choice.checked = true;
    }
    document.addEventListener('change', event => {
        if (remembered.includes(event.target.name)) storage(event.target.name, event.target.id);
    });

    // One stop for the tab key in each chart; the arrow keys go on from there.
    const arrows = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};

    // The next cell in a direction: the nearest one, what lies aside counting for more.
    const neighbour = (cells, from, [x, y]) => {
        const middle = cell => {
            const box = cell.getBoundingClientRect();
            return [box.left + box.width / 2, box.top + box.height / 2];
        };
        const [left, top] = middle(from);
        let best = null;
        let least = Infinity;
        for (const cell of cells) {
            const [otherLeft, otherTop] = middle(cell);
            const along = (otherLeft - left) * x + (otherTop - top) * y;
            const aside = Math.abs((otherLeft - left) * y) + Math.abs((otherTop - top) * x);
            if (along > 1 && along + 4 * aside < least) {
                least = along + 4 * aside;
                best = cell;
            }
        }
        return best;
    };
    const roveCells = chart => {
        const tables = [...document.querySelectorAll('table')];
        const place = cell => [tables.indexOf(cell.closest('table')), cell.cellIndex, cell.parentElement.rowIndex];
        const cells = [...chart.querySelectorAll('td:has(> i)')].map(cell => [place(cell), cell])
            .sort(([one], [other]) => one[0] - other[0] || one[1] - other[1] || one[2] - other[2])
            .map(([, cell]) => cell); // by date
        if (!cells.length) return;
        let current = cells[chart.dataset.rove === 'last' ? cells.length - 1 : 0];
        const go = cell => {
            current.tabIndex = -1;
            current = cell;
            current.tabIndex = 0;
        };
        go(current);
        chart.addEventListener('keydown', event => {
            const next = arrows[event.key] ? neighbour(cells, current, arrows[event.key])
                : event.key === 'Home' ? cells[0] : event.key === 'End' ? cells[cells.length - 1] : null;
            if (!arrows[event.key] && !next) return;
            event.preventDefault();
            if (!next) return;
            go(next);
            next.focus();
        });
        chart.addEventListener('click', event => {
            const cell = event.target.closest('td');
            if (!cells.includes(cell)) return;
            go(cell);
            cell.focus();
        });
    };

    // The bars are one slider, whose value is the bar that is read.
    const roveBars = zones => {
        const bars = [...zones.children];
        let at = bars.length - 1;
        const show = (next, isShown) => {
            bars[at].classList.remove('on');
            at = Math.max(0, Math.min(bars.length - 1, next));
            bars[at].classList.toggle('on', isShown);
            zones.setAttribute('aria-valuenow', at + 1);
            zones.setAttribute('aria-valuetext', bars[at].textContent);
        };
        zones.removeAttribute('aria-hidden');
        zones.tabIndex = 0;
        const attributes = {role: 'slider', 'aria-label': zones.dataset.label, 'aria-valuemin': 1,
            'aria-valuemax': bars.length};
        for (const [name, value] of Object.entries(attributes)) zones.setAttribute(name, value);
        show(at, false);
        zones.addEventListener('focus', () => show(at, true));
        zones.addEventListener('blur', () => show(at, false));
        zones.addEventListener('keydown', event => {
            const steps = {ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1, PageDown: -7, PageUp: 7,
                Home: -bars.length, End: bars.length};
            if (!(event.key in steps)) return;
            event.preventDefault();
            show(at + steps[event.key], true);
        });
    };
    document.addEventListener('DOMContentLoaded', () => {
        document.querySelectorAll('[data-rove]').forEach(roveCells);
        document.querySelectorAll('.zones').forEach(roveBars);
    });
})();
