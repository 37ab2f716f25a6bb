// Reads an invoice from its page and returns JSON. The labels and headings are those of the back office.
(function () {
    const result = {fields: {}, items: [], notes: [], shipMethod: '', shipCost: '', tracking: '', paid: '',
                    profileUserID: ''};
    const cellsIn = element => [...element.querySelectorAll('td, th')];
    // A hidden element is checked first, because its innerText is the text that it would show.
    const isShown = element => element.getClientRects().length > 0;
    const t = element => isShown(element) ? (element.innerText || '').replace(/\u00a0/g, ' ').trim() : '';
    const cellAfter = cell => {
        let next = cell && cell.nextElementSibling;
        while (next && !/^T[DH]$/.test(next.tagName))
            next = next.nextElementSibling;
        return next;
    };
    const label = /^(Name|Email|Address|City|Zip|Country|Phone|Company Name|Codes):\s*([\s\S]*)$/;
    const labelOf = cell => (label.exec(t(cell)) || [])[1];
    // A layout cell shows the texts of all cells inside it. Its own text is the rest, without the cells that speak for
    // themselves; a table that is only the value of a label stays.
    const ownText = (cell, speaks) =>
        cellsIn(cell).filter(speaks).reduce((text, inner) => text.replace(t(inner), ''), t(cell)).trim();
    // The cell after the first cell that holds the words itself and whose next cell shows a text.
    const textAfter = words => {
        const speaks = cell => cellAfter(cell) && words.test(t(cell));
        return cellsIn(document).filter(cell => speaks(cell) && words.test(ownText(cell, speaks)))
            .map(cell => t(cellAfter(cell))).find(text => text) || '';
    };

    const profile = document.querySelector('a[href*="_update-customer"]');
    if (profile)
        result.profileUserID = (/id=(\d+)/.exec(profile.getAttribute('href')) || [])[1] || '';

    for (const cell of cellsIn(document)) {
        const found = label.exec(ownText(cell, labelOf));
        if (!found || found[1] in result.fields)
            continue;
        const value = found[2].trim();
        if (value || !cellsIn(cell).some(inner => labelOf(inner) === found[1])) // an inner cell has the value
            result.fields[found[1]] = value;
    }
    result.tracking = textAfter(/Shipment Tracking No/);
    result.paid = textAfter(/Paid amount/);

    for (const table of document.querySelectorAll('table')) {
        const [head, ...rows] = [...table.rows].filter(isShown);
        if (!head)
            continue;
        const heading = t(head);
        if (heading.includes('Invoice ID'))
            for (const {cells} of rows)
                if (cells.length >= 8)
                    result.items.push({title: t(cells[2]), qty: t(cells[4]), total: t(cells[7])});
        if (heading.includes('Invoice Notes') && heading.includes('Created Name'))
            for (const {cells} of rows)
                if (cells.length >= 4 && t(cells[0]))
                    result.notes.push({text: t(cells[0]), by: t(cells[2]), date: t(cells[3])});
    }

    const shipping = document.querySelector('span[onclick*="show_shipping_form"]');
    if (shipping) {
        result.shipMethod = t(shipping);
        const cost = cellAfter(shipping.closest('td, th'));
        result.shipCost = cost ? t(cost) : '';
    }
    return JSON.stringify(result);
})
