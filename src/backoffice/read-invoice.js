// Reads an invoice from its page and returns JSON. The labels and headings are those of the back office.
(function () {
    const result = {fields: {}, items: [], notes: [], shipMethod: '', shipCost: '', tracking: '', paid: '',
                    profileUserID: ''};
    const t = element => (element.innerText || '').replace(/\u00a0/g, ' ').trim();
    const isCell = element => element && /^T[DH]$/.test(element.tagName);
    const cellAfter = cell => {
        const next = cell && cell.nextElementSibling;
        return isCell(next) ? next : null;
    };

    const profile = document.querySelector('a[href*="_update-customer"]');
    if (profile)
        result.profileUserID = (/id=(\d+)/.exec(profile.getAttribute('href')) || [])[1] || '';

    for (const cell of document.querySelectorAll('td, th')) {
        if (cell.querySelector('td, th'))
            continue; // a layout cell; the loop also visits its inner cells
        const text = t(cell);
        const field =
            /^(Name|Email|Address|City|Zip|Country|Phone|Company Name|Codes):\s*([\s\S]*)$/.exec(text);
        if (field && !(field[1] in result.fields))
            result.fields[field[1]] = field[2].trim();
        const next = cellAfter(cell);
        if (text.includes('Shipment Tracking No') && next && !result.tracking)
            result.tracking = t(next);
        if (text.includes('Paid amount') && next && !result.paid)
            result.paid = t(next);
    }

    for (const table of document.querySelectorAll('table')) {
        const [head, ...rows] = table.rows;
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
